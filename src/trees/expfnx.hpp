// jmk_utl_expfnx: the functions that remain when an exponential is integrated over a layer.
//
//     order 1   (e^x - 1) / x                     -> 1     for x -> 0
//     order 2   ((e^x - 1)/x - 1) / x             -> 1/2
//     order 3   (((e^x - 1)/x - 1)/x - 1/2) / x   -> 1/6
//
// Near 0 each is its Taylor series, where the closed form would cancel. Serves the one-layer tree
// and the coefficients of leaf cells.
#pragma once

#include <span>

#include "frame/log.hpp"

namespace jmk {

/// The function of order 1.
double expfn1(double x);

/// Replaces each x by the function of the given order. Another order than 1, 2, 3 stops the run.
void jmk_utl_expfnx(frame::Log& log, int order, std::span<double> x);

}  // namespace jmk
