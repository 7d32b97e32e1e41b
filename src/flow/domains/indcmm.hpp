// flw_module_indcmm: packed index lists for the exchanges between sub-domains.
//
// From the links of flw_module_dc1 it makes, for each array, the places that a process sends and
// those that it fills, edges and corners among them: an entry's value comes straight from the
// domain that keeps the cell, never by way of another one's halo, so that one exchange fills all
// halos with what fill_halos and fill_face_halos give in a grid of one domain. Both sides of a
// message walk the receiver's entries, i fastest. Formed once at the start.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "flow/domains/dc1.hpp"

namespace flow::flw_module_indcmm {

/// Which halo entries an exchange fills.
enum class Pattern {
  wide,    ///< both layers, edges and corners
  nearest  ///< the one layer across the sides: what a linear solver's next sweep looks at
};

/// Places in an array whose values go to, or come from, another process.
struct Places {
  std::int32_t rank;
  std::vector<std::size_t> at;
};

/// The exchange of one array, for one process.
struct Exchange {
  struct Copy {
    std::size_t to, from;
  };

  std::vector<Places> send, receive;               ///< by rank
  std::vector<Copy> own;                           ///< what the process gives to its own halos
  std::array<std::vector<std::size_t>, 3> turned;  ///< halo entries mirrored along each axis
  std::vector<std::size_t> closed;                 ///< faces of symmetric ends, which are 0
};
/// The exchange of the mass fluxes `ru`, `rv`, `rw`.
using FaceExchange = std::array<Exchange, 3>;

/// The exchange of an array of cells, or of the faces of an axis: then a face between two domains
/// is kept by the lower one. Faces of an axis that is not computed have none.
/// Errors: "### program error -0-" for a rank that is not in the table, "-1-" when the table leaves
/// an entry without a giver.
Exchange mkindex(frame::Log& log, const SubDomains& domains, const Ends& ends, std::int32_t rank,
                 flw_module_dc1::FaceAxis faces = flw_module_dc1::kCells,
                 Pattern pattern = Pattern::wide);
/// The same for the three arrays of faces.
FaceExchange mkindex_faces(frame::Log& log, const SubDomains& domains, const Ends& ends,
                           std::int32_t rank);

}  // namespace flow::flw_module_indcmm
