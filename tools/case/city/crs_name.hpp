// Names of coordinate systems as they occur in files, in the form that PROJ reads.
#pragma once

#include <string>

namespace townskin_case {

/// "EPSG:26912" from a URN, a URL, a bare number or any other spelling; of a compound of a plane
/// system and heights the plane one. What is none of these comes back as it stands: PROJ reads WKT
/// and its own strings too.
std::string crs_key(const std::string& name);

}  // namespace townskin_case
