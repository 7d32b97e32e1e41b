// Bi-CGSTAB for a general matrix of seven diagonals.
#pragma once

namespace flow {

struct BcgstbSystem {};

}  // namespace flow
