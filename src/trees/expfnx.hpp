// jmk_utl_expfnx: what remains when an exponential is averaged over a layer,
//
//     (e^x - 1) / x   -> 1 for x -> 0.
//
// Near 0 it is its Taylor series, where a closed form would cancel. Serves the one-layer tree and
// the weights of leaf cells.
#pragma once

namespace jmk {

double jmk_utl_expfnx(double x);

}  // namespace jmk
