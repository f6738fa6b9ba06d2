// Numerical routines of the mmutil utility library: random numbers, three-by-three linear
// algebra, the symmetric eigen-solver, integration, regression and index sorting. None is
// used by the energy job itself.
#ifndef MMUTIL_NUMERIC_H
#define MMUTIL_NUMERIC_H

namespace mmutil {}  // namespace mmutil

#endif  // MMUTIL_NUMERIC_H
