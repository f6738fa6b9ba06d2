// The symmetric eigen-solver of mmutil: cyclic Jacobi rotations with threshold sweeps, for
// matrices of order 1 to 3.
#include <cmath>
#include <cstdio>

#include "mmutil/numeric.h"

namespace mmutil {
namespace {

// Relative size below which an off-diagonal element no longer counts against a diagonal one
// (a shade below the double machine epsilon).
constexpr double kNegligible = 2.220446e-16;
constexpr int kMaxSweeps = 50;
// The first sweeps rotate only elements above a threshold; later ones rotate every non-zero
// element and, after these, drop negligible ones without rotating.
constexpr int kThresholdSweeps = 3;
constexpr int kSweepsBeforeDropping = 4;

// One element pair of a plane rotation with sine s and tau = s / (1 + cos).
void rotate_pair(double& x, double& y, double s, double tau) {
  const double g = x, h = y;
  x = g - s * (h + g * tau);
  y = h + s * (g - h * tau);
}

// Annihilates a[p][q] (p < q), of which g is 100 times the size, by one rotation, updating d,
// the sweep's sums z, the rest of the upper triangle and the eigenvectors v.
void rotate(double (*a)[3], int n, int p, int q, double g, double* d, double* z, double (*v)[3]) {
  double h = d[q] - d[p];
  double t = 0.0;
  if (kNegligible * std::fabs(h) < g) {
    const double theta = 0.5 * h / a[p][q];
    t = 1.0 / (std::fabs(theta) + std::sqrt(theta * theta + 1.0));
    if (theta < 0.0) t = -t;
  } else {
    t = a[p][q] / h;
  }
  const double c = 1.0 / std::sqrt(t * t + 1.0);
  const double s = t * c;
  const double tau = s / (1.0 + c);
  h = t * a[p][q];
  z[p] -= h;
  z[q] += h;
  d[p] -= h;
  d[q] += h;
  a[p][q] = 0.0;
  for (int j = 0; j < p; ++j) rotate_pair(a[j][p], a[j][q], s, tau);
  for (int j = p + 1; j < q; ++j) rotate_pair(a[p][j], a[j][q], s, tau);
  for (int j = q + 1; j < n; ++j) rotate_pair(a[p][j], a[q][j], s, tau);
  for (int j = 0; j < n; ++j) rotate_pair(v[j][p], v[j][q], s, tau);
}

}  // namespace

void jacobi_nr(double (*a)[3], int n, double* d, double (*v)[3], int& nrot) {
  double b[3], z[3];
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) v[i][j] = 0.0;
    v[i][i] = 1.0;
    b[i] = d[i] = a[i][i];
    z[i] = 0.0;
  }
  nrot = 0;
  for (int sweep = 1; sweep <= kMaxSweeps; ++sweep) {
    double sm = 0.0;
    for (int p = 0; p < n - 1; ++p) {
      for (int q = p + 1; q < n; ++q) sm += std::fabs(a[p][q]);
    }
    if (sm == 0.0) {
      eigsrt_nr(d, v, n);
      return;
    }
    const double tresh = sweep <= kThresholdSweeps ? 0.2 * sm / (n * n) : 0.0;
    for (int p = 0; p < n - 1; ++p) {
      for (int q = p + 1; q < n; ++q) {
        const double g = 100.0 * std::fabs(a[p][q]);
        if (sweep > kSweepsBeforeDropping && kNegligible * std::fabs(d[p]) >= g &&
            kNegligible * std::fabs(d[q]) >= g) {
          a[p][q] = 0.0;
        } else if (std::fabs(a[p][q]) > tresh) {
          rotate(a, n, p, q, g, d, z, v);
          ++nrot;
        }
      }
    }
    for (int i = 0; i < n; ++i) {
      b[i] += z[i];
      d[i] = b[i];
      z[i] = 0.0;
    }
  }
  std::printf("ERROR: Too many iterations in routine jacobi\n");
  std::fflush(stdout);
}

void eigsrt_nr(double* d, double (*v)[3], int n) {
  for (int i = 0; i < n - 1; ++i) {
    int k = i;
    double p = d[i];
    for (int j = i; j < n; ++j) {
      if (d[j] >= p) {
        k = j;
        p = d[j];
      }
    }
    if (k == i) continue;
    d[k] = d[i];
    d[i] = p;
    if (v == nullptr) continue;
    for (int row = 0; row < n; ++row) swap_dbl(&v[row][i], &v[row][k]);
  }
}

}  // namespace mmutil
