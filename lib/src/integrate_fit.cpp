// Runge-Kutta steps and the straight-line least-squares fit of mmutil. The groupings of the
// sums below fix the rounding, so that a run reproduces earlier ones to the bit.
#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <new>

#include "mmutil/numeric.h"

namespace mmutil {
namespace {

// Below this |determinant| the x values count as all equal and no line is fitted (a shade
// above 2^-53).
constexpr double kDegenerateFit = 1.11022302e-16;

// Array new of m doubles. A negative m is the language's invalid array length,
// std::bad_array_new_length; checked here because some compilers throw its base std::bad_alloc.
double* new_stage(int m) {
  if (m < 0) throw std::bad_array_new_length();
  return new double[m];
}

}  // namespace

double rk4_one(double t0, double u0, double dt, double (*f)(double, double)) {
  const double f0 = f(t0, u0);
  const double t1 = 0.5 * dt + t0;
  const double f1 = f(t1, 0.5 * (dt * f0) + u0);
  const double f2 = f(t1, (dt * f1) * 0.5 + u0);
  const double f3 = f(t0 + dt, dt * f2 + u0);
  return ((((f1 + f1) + f0) + (f2 + f2)) + f3) * dt / 6.0 + u0;
}

// The stage arrays are plain array new, released at the end; a negative m fails at the first
// of them, after the first slope has been taken, whose array is not released.
double* rk4_vec(double t0, int m, double* u0, double dt, double* (*f)(double, int, double*)) {
  double* f0 = f(t0, m, u0);
  const double t1 = t0 + 0.5 * dt;
  double* u1 = new_stage(m);
  for (int i = 0; i < m; ++i) u1[i] = (f0[i] * dt) * 0.5 + u0[i];
  double* f1 = f(t1, m, u1);
  double* u2 = new_stage(m);
  for (int i = 0; i < m; ++i) u2[i] = (f1[i] * dt) * 0.5 + u0[i];
  double* f2 = f(t1, m, u2);
  double* u3 = new_stage(m);
  for (int i = 0; i < m; ++i) u3[i] = f2[i] * dt + u0[i];
  double* f3 = f(t0 + dt, m, u3);
  double* u = new_stage(m);
  for (int i = 0; i < m; ++i) {
    u[i] = ((((f1[i] + f1[i]) + f0[i]) + (f2[i] + f2[i])) + f3[i]) * dt / 6.0 + u0[i];
  }
  for (double* stage : {f0, f1, f2, f3, u1, u2, u3}) delete[] stage;
  return u;
}

int LinearRegression(const double* x, const double* y, int n, double* a, double* b, double* s) {
  *a = *b = *s = 0.0;
  if (n < 3) {
    std::fprintf(stderr, "Not enough data [%d] (at least n > 2)!\n", n);
    return -1;
  }
  double sx = 0.0, sy = 0.0, sxx = 0.0, syy = 0.0, sxy = 0.0;
  for (int i = 0; i < n; ++i) {
    sx += x[i];
    sy += y[i];
    sxx += x[i] * x[i];
    syy += y[i] * y[i];
    sxy += x[i] * y[i];
  }
  const double count = n;
  const double d = sxx * count - sx * sx;
  if (std::fabs(d) > kDegenerateFit) {
    *b = (sxy * count - sx * sy) / d;
    *a = (sy - sx * *b) / count;
    const double syy_centred = syy - sy * sy / count;
    const double sxy_centred = sxy - sx * sy / count;
    *s = std::sqrt((syy_centred - sxy_centred * *b) / (n - 2));
  }
  return 0;
}

}  // namespace mmutil
