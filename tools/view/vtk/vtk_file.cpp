#include "vtk/vtk_file.hpp"

#include <array>
#include <bit>
#include <cstring>

#include "out_file.hpp"
#include "stage.hpp"

namespace townskin_view {

namespace {

static_assert(std::endian::native == std::endian::little, "the files say LittleEndian");

template <class Value>
VtkArray array_of(std::string name, std::string_view type, std::span<const Value> values,
                  std::size_t components, std::string_view units) {
  return {std::move(name), type, components, std::string(units), std::as_bytes(values)};
}

std::string head_of(const VtkArray& array, std::uint64_t offset) {
  std::string text = "<DataArray type=\"" + std::string(array.type) + "\" Name=\"" + array.name +
                     "\" NumberOfComponents=\"" + std::to_string(array.components) +
                     "\" format=\"appended\" offset=\"" + std::to_string(offset) + "\"";
  if (array.units.empty()) return text + "/>\n";
  return text + "><InformationKey name=\"UNITS_LABEL\" location=\"vtkDataArray\">" + array.units +
         "</InformationKey></DataArray>\n";
}

constexpr std::string_view kFirstLine = "<?xml version=\"1.0\"?>\n";

std::string opening(std::string_view type, std::string_view version) {
  return std::string(kFirstLine) + "<!-- " + std::string(kMark) + " -->\n<VTKFile type=\"" +
         std::string(type) + "\" version=\"" + std::string(version) +
         "\" byte_order=\"LittleEndian\" header_type=\"UInt64\">\n";
}

}  // namespace

VtkArray vtk_array(std::string name, std::span<const float> values, std::size_t components,
                   std::string_view units) {
  return array_of(std::move(name), "Float32", values, components, units);
}
VtkArray vtk_array(std::string name, std::span<const double> values, std::size_t components,
                   std::string_view units) {
  return array_of(std::move(name), "Float64", values, components, units);
}
VtkArray vtk_array(std::string name, std::span<const std::int32_t> values) {
  return array_of(std::move(name), "Int32", values, 1, {});
}
VtkArray vtk_array(std::string name, std::span<const std::uint8_t> values) {
  return array_of(std::move(name), "UInt8", values, 1, {});
}

void write_vtk(const VtkFile& file, const std::string& path) {
  OutFile out(path);
  std::uint64_t offset = 0;
  const auto head = [&](const VtkArray& array) {
    std::string text = head_of(array, offset);
    offset += sizeof(std::uint64_t) + array.bytes.size();
    return text;
  };
  const VtkArray time = vtk_array("TimeValue", std::span(&file.time, 1));
  std::string text = opening(file.type, "1.0") + "<" + file.type + file.whole_attributes +
                     ">\n<FieldData>\n" + head(time) + "</FieldData>\n<Piece" +
                     file.piece_attributes + ">\n";
  for (const VtkPart& part : file.parts) {
    text += "<" + part.element + part.attributes + ">\n";
    for (const VtkArray& array : part.arrays) text += head(array);
    text += "</" + part.element + ">\n";
  }
  text += "</Piece>\n</" + file.type + ">\n<AppendedData encoding=\"raw\">\n_";
  out.put(text);
  const auto values = [&](const VtkArray& array) {
    const std::uint64_t size = array.bytes.size();
    std::array<char, sizeof size> bytes{};
    std::memcpy(bytes.data(), &size, sizeof size);
    out.put({bytes.data(), bytes.size()});
    out.put({reinterpret_cast<const char*>(array.bytes.data()), array.bytes.size()});
  };
  values(time);
  for (const VtkPart& part : file.parts) {
    for (const VtkArray& array : part.arrays) values(array);
  }
  out.put("\n</AppendedData>\n</VTKFile>\n");
  out.close();
}

void write_pvd(const std::vector<VtkTime>& times, const std::string& path) {
  OutFile out(path);
  out.put(opening("Collection", "0.1") + "<Collection>\n");
  for (const VtkTime& time : times) {
    out.put("<DataSet timestep=\"")
        .number(time.time)
        .put("\" part=\"0\" file=\"" + time.file + "\"/>\n");
  }
  out.put("</Collection>\n</VTKFile>\n");
  out.close();
}

}  // namespace townskin_view
