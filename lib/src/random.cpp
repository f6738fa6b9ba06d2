// The shared random stream of mmutil and the draws a kinetic Monte Carlo code takes from it.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>

#include "mmutil/numeric.h"

namespace mmutil {
namespace {

// L'Ecuyer's two congruential generators (multiplier, Schrage quotient and remainder, modulus)
// and the Bays-Durham shuffle table.
constexpr std::int64_t kIM1 = 2147483563;
constexpr std::int64_t kIM2 = 2147483399;
constexpr std::int64_t kIMM1 = kIM1 - 1;
constexpr std::int64_t kIA1 = 40014, kIQ1 = 53668, kIR1 = 12211;
constexpr std::int64_t kIA2 = 40692, kIQ2 = 52774, kIR2 = 3791;
constexpr int kNTAB = 32;
constexpr std::int64_t kNDIV = 1 + kIMM1 / kNTAB;
constexpr double kAM = 1.0 / kIM1;
constexpr double kRNMX = 1.0 - 1.2e-7;  // the largest value returned, so it stays below 1

// The shared stream's seed and first congruential state.
std::int64_t idum = 1000;

// The second generator's state, the last shuffled output and the shuffle table, shared by every
// seed handed to ran2().
std::int64_t idum2 = 123456789;
std::int64_t iy = 0;
std::int64_t iv[kNTAB] = {};

// The banked second value of the last polar pair: 1 when the next normal draw needs a new pair.
int need_newvars = 1;
double banked_v2 = 0.0;
double banked_factor = 0.0;

// One step x -> ia * x mod m by Schrage's method, which keeps every product within range.
std::int64_t schrage_step(std::int64_t x, std::int64_t ia, std::int64_t iq, std::int64_t ir,
                          std::int64_t m) {
  const std::int64_t k = x / iq;
  x = ia * (x - k * iq) - k * ir;
  return x < 0 ? x + m : x;
}

}  // namespace

double ran2(std::int64_t* seed) {
  if (*seed <= 0) {
    // Negated through unsigned arithmetic, so that even the most negative seed is defined.
    *seed = *seed == 0 ? 1 : static_cast<std::int64_t>(0 - static_cast<std::uint64_t>(*seed));
    idum2 = *seed;
    for (int j = kNTAB + 7; j >= 0; --j) {
      *seed = schrage_step(*seed, kIA1, kIQ1, kIR1, kIM1);
      if (j < kNTAB) iv[j] = *seed;
    }
    iy = iv[0];
  }
  *seed = schrage_step(*seed, kIA1, kIQ1, kIR1, kIM1);
  idum2 = schrage_step(idum2, kIA2, kIQ2, kIR2, kIM2);
  // iy lies in 0 ... IMM1 for seeds within 32 bits, which gives a slot of 0 ... 31; the mask
  // changes nothing there and keeps the table in bounds for any other seed.
  const int j = static_cast<int>((iy / kNDIV) & (kNTAB - 1));
  iy = iv[j] - idum2;
  iv[j] = *seed;
  if (iy < 1) iy += kIMM1;
  const double temp = static_cast<double>(iy) * kAM;
  return temp > kRNMX ? kRNMX : temp;
}

double randUniform() { return ran2(&idum); }

void init_random_seed() {
  std::srand(static_cast<unsigned>(std::time(nullptr)));
  idum = std::rand();
}

std::int64_t random_stream_seed() { return idum; }

double randGaussian() {
  if (need_newvars == 0) {
    need_newvars = 1;
    return banked_v2 * banked_factor;
  }
  double v1 = 0.0, rsq = 0.0;
  do {
    v1 = 2.0 * ran2(&idum) - 1.0;
    banked_v2 = 2.0 * ran2(&idum) - 1.0;
    rsq = v1 * v1 + banked_v2 * banked_v2;
  } while (rsq >= 1.0 || rsq == 0.0);
  need_newvars = 0;
  banked_factor = std::sqrt(-2.0 * std::log(rsq) / rsq);
  return v1 * banked_factor;
}

double randExponential() {
  double u = ran2(&idum);
  if (u == 0.0) u = 4.656612873077393e-10;  // 2^-31
  return -std::log(u);
}

int select_reaction(const double* rates, int n, double total, double r) {
  if (n < 1) return -1;
  const double target = r * total;
  double sum = 0.0;
  for (int i = 0; i < n; ++i) {
    sum += rates[i];
    if (sum > target) return i;
  }
  return -1;
}

}  // namespace mmutil
