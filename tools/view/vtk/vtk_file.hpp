// One VTK XML file with its arrays appended as they stand in memory.
//
// The form is that of "VTK File Formats": an XML head that names each array and its offset, then
// "_" and for each array its size in bytes (64 bits) and its bytes. Used by the writers of .vtp
// and .vtr.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace townskin_view {

/// An array of the file; its values must last until it is written.
struct VtkArray {
  std::string name;
  std::string_view type;  ///< "Float32", "Int32", ...
  std::size_t components = 1;
  std::string units;  ///< empty: none
  std::span<const std::byte> bytes;
};

VtkArray vtk_array(std::string name, std::span<const float> values, std::size_t components = 1,
                   std::string_view units = {});
VtkArray vtk_array(std::string name, std::span<const double> values, std::size_t components = 1,
                   std::string_view units = {});
VtkArray vtk_array(std::string name, std::span<const std::int32_t> values);
VtkArray vtk_array(std::string name, std::span<const std::uint8_t> values);

/// A part of a piece: "Points", "CellData", ... with its arrays.
struct VtkPart {
  std::string element;     ///< its name
  std::string attributes;  ///< behind the name, with a blank before each
  std::vector<VtkArray> arrays;
};

struct VtkFile {
  std::string type;              ///< "PolyData" or "RectilinearGrid"
  std::string whole_attributes;  ///< of the element of that name
  std::string piece_attributes;
  double time = 0.0;  ///< [h] of a run of surfaces, [s] of a flow
  std::vector<VtkPart> parts;
};

/// Writes `path`; a fault where the disk is full.
void write_vtk(const VtkFile& file, const std::string& path);

/// The list of files and their times that ParaView opens as one series.
struct VtkTime {
  double time = 0.0;
  std::string file;
};
void write_pvd(const std::vector<VtkTime>& times, const std::string& path);

}  // namespace townskin_view
