// Writes a large, deterministic Gaussian-style output file for the benchmarks: a header, then
// geometry-optimisation steps (coordinates, SCF iteration blocks, one "SCF Done" energy line
// and forces per step), now and then a line of several thousand characters, and a long tail of
// population analysis after the last energy line.
//
//   log_generator OUT SIZE_MIB [SEED] [TAIL_KIB] [CHARGE MULTIPLICITY]
// The tail is SIZE/16 unless TAIL_KIB gives it; charge 0 and multiplicity 1 unless given (the
// molecule's atoms are the same for every seed, so that the three states of a site agree).
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

// A small deterministic generator, so that the same arguments give the same file everywhere.
std::uint64_t g_state = 88172645463325252ull;

std::uint64_t next_random() {
  g_state ^= g_state << 13;
  g_state ^= g_state >> 7;
  g_state ^= g_state << 17;
  return g_state;
}

double uniform() { return static_cast<double>(next_random() >> 11) * 0x1.0p-53; }
int below(int n) { return static_cast<int>(next_random() % static_cast<std::uint64_t>(n)); }

const char* const kElements[] = {"C", "H", "N", "O", "S"};
constexpr int kAtoms = 30;

// The atoms' coordinates, kept for the archive entry.
double g_xyz[kAtoms][3];

void write_header(std::FILE* out, int charge, int multiplicity) {
  std::fprintf(out,
               " Entering Gaussian System, Link 0=g16\n"
               " ------------------------------------------------------------------\n"
               " Gaussian 16, revision C.01: generated benchmark output, not a real calculation\n"
               " ------------------------------------------------------------------\n"
               " #p opt b3lyp/6-31g(d) scf=(tight,maxcycle=256) pop=full\n"
               " ------------------------------------------------------------------\n"
               " Charge = %2d Multiplicity = %d\n",
               charge, multiplicity);
  for (int a = 0; a < kAtoms; ++a) {
    for (double& x : g_xyz[a]) x = 10 * uniform() - 5;
    std::fprintf(out, " %s %14.8f %14.8f %14.8f\n", kElements[a % 5], g_xyz[a][0], g_xyz[a][1],
                 g_xyz[a][2]);
  }
}

// The closing archive entry, wrapped at 70 characters, and the termination line.
void write_archive(std::FILE* out, int charge, int multiplicity, double energy) {
  std::string entry =
      "1\\1\\GINC-BENCH\\FOpt\\RB3LYP\\6-31G(d)\\C6H6N6O6S6\\BENCH\\01-Jan-2026\\0\\\\#P "
      "B3LYP/6-31G(d) opt\\\\generated\\\\" +
      std::to_string(charge) + "," + std::to_string(multiplicity);
  char atom[96];
  for (int a = 0; a < kAtoms; ++a) {
    std::snprintf(atom, sizeof atom, "\\%s,%.7f,%.7f,%.7f", kElements[a % 5], g_xyz[a][0],
                  g_xyz[a][1], g_xyz[a][2]);
    entry += atom;
  }
  std::snprintf(atom, sizeof atom, "\\\\Version=ES64L-G16RevC.01\\HF=%.7f\\RMSD=1.0e-09\\\\@",
                energy);
  entry += atom;
  std::fputc('\n', out);
  for (std::size_t at = 0; at < entry.size(); at += 70) {
    std::fprintf(out, " %s\n", entry.substr(at, 70).c_str());
  }
  std::fputs("\n Normal termination of Gaussian 16 at Thu Jan  1 00:00:00 2026.\n", out);
}

void write_coordinates(std::FILE* out) {
  std::fputs(
      "                          Input orientation:\n"
      " ---------------------------------------------------------------------\n"
      " Center     Atomic      Atomic             Coordinates (Angstroms)\n"
      " Number     Number       Type             X           Y           Z\n"
      " ---------------------------------------------------------------------\n",
      out);
  for (int a = 0; a < kAtoms; ++a) {
    std::fprintf(out, " %6d %10d %11d %15.6f %11.6f %11.6f\n", a + 1, 6 + a % 3, 0,
                 10 * uniform() - 5, 10 * uniform() - 5, 10 * uniform() - 5);
  }
  std::fputs(" ---------------------------------------------------------------------\n", out);
}

// One SCF: iteration blocks, then the energy line.
void write_scf(std::FILE* out, double energy) {
  const int cycles = 8 + below(12);
  double e = energy + 0.5;
  for (int c = 1; c <= cycles; ++c) {
    const double next = energy + (e - energy) * 0.3;
    std::fprintf(out, " Cycle %3d  Pass 1  IDiag  1:\n", c);
    std::fprintf(out, " E= %.12f     Delta-E=      %16.12f Rises=F Damp=F\n", next, next - e);
    std::fprintf(out, " DIIS: error= %.2fD-%02d at cycle %3d NSaved=%4d.\n", 1 + 8 * uniform(),
                 2 + c, c, c);
    std::fprintf(out, " RMSDP=%.2fD-%02d MaxDP=%.2fD-%02d DE=%.2fD-%02d OVMax= %.2fD-%02d\n",
                 1 + 8 * uniform(), 3 + c, 1 + 8 * uniform(), 2 + c, 1 + 8 * uniform(), 4 + c,
                 1 + 8 * uniform(), 2 + c);
    e = next;
  }
  std::fprintf(out, " SCF Done:  E(RB3LYP) =  %.9f     A.U. after %4d cycles\n", energy, cycles);
  std::fprintf(out, "            NFock=%3d  Conv=0.%02dD-08     -V/T= 2.0%04d\n", cycles,
               below(100), below(10000));
}

void write_forces(std::FILE* out) {
  std::fputs(" Center     Atomic                   Forces (Hartrees/Bohr)\n", out);
  for (int a = 0; a < kAtoms; ++a) {
    std::fprintf(out, " %6d %8d %18.9f %14.9f %14.9f\n", a + 1, 6 + a % 3, 0.02 * uniform() - 0.01,
                 0.02 * uniform() - 0.01, 0.02 * uniform() - 0.01);
  }
}

// A line of several thousand characters, as archive entries and long lists print.
void write_long_line(std::FILE* out) {
  const int values = 300 + below(800);
  std::fputs(" Eigenvalues --", out);
  for (int v = 0; v < values; ++v) std::fprintf(out, " %9.5f", 20 * uniform() - 10);
  std::fputc('\n', out);
}

void write_population_tail(std::FILE* out, long bytes) {
  const long start = std::ftell(out);
  std::fputs(" Population analysis using the SCF density.\n", out);
  for (int block = 0; std::ftell(out) - start < bytes; ++block) {
    std::fputs(" Alpha  occ. eigenvalues --", out);
    for (int v = 0; v < 5; ++v) std::fprintf(out, " %9.5f", -10 * uniform());
    std::fputc('\n', out);
    std::fprintf(out, " %4d %s  1S    %10.5f %10.5f %10.5f %10.5f %10.5f\n", block % kAtoms + 1,
                 kElements[block % 5], uniform(), uniform(), uniform(), uniform(), uniform());
    if (block % 2000 == 0) write_long_line(out);
  }
  std::fputs(" Mulliken charges:\n", out);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: %s OUT SIZE_MIB [SEED] [TAIL_KIB] [CHARGE MULTIPLICITY]\n",
                 argv[0]);
    return 2;
  }
  const long size = std::atol(argv[2]) << 20;
  if (argc > 3) g_state += std::strtoull(argv[3], nullptr, 10) * 0x9E3779B97F4A7C15ull;
  const long tail = argc > 4 && argv[4][0] != '\0' ? std::atol(argv[4]) << 10 : size / 16;
  const int charge = argc > 6 ? std::atoi(argv[5]) : 0;
  const int multiplicity = argc > 6 ? std::atoi(argv[6]) : 1;
  std::FILE* out = std::fopen(argv[1], "w");
  if (out == nullptr) {
    std::perror(argv[1]);
    return 1;
  }
  write_header(out, charge, multiplicity);
  double energy = -693.2 - uniform();
  double last = energy;
  for (int step = 1; std::ftell(out) < size - tail; ++step) {
    write_coordinates(out);
    write_scf(out, energy);
    write_forces(out);
    if (step % 40 == 0) write_long_line(out);
    last = energy;
    energy -= 1e-3 * uniform();
  }
  std::fputs(" Optimization completed.\n    -- Stationary point found.\n", out);
  // The archive entry and termination line take about 2.6 KB of the tail.
  write_population_tail(out, size - std::ftell(out) - 2600);
  write_archive(out, charge, multiplicity, last);
  if (std::fclose(out) != 0) {
    std::perror(argv[1]);
    return 1;
  }
  return 0;
}
