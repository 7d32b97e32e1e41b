// flw_matrix: the matrix of the pressure equation.
#pragma once

namespace flow {

struct PressureMatrix;

}  // namespace flow
