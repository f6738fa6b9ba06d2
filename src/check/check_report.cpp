#include "check_report.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "text_cells.h"
#include "text_format.h"

namespace {

// The cells of one row of the table, in the order of kColumns.
constexpr const char* kColumns[] = {"site",   "role", "file",  "engine",          "end",
                                    "charge", "mult", "atoms", "formula",         "method",
                                    "basis",  "job",  "SCF",   "energy (hartree)"};
constexpr std::size_t kColumnCount = std::size(kColumns);

// What the energy job takes from a row, as text: the energy, or "-".
std::string energy_text(const FileRow& row) {
  return row.energy == SpEnerStatus::found ? format_text("%.9f", row.hartree) : "-";
}

std::string or_dash(const std::string& text) { return text.empty() ? "-" : text; }

// One listing of a file in the batch list: the site and role that name it, and the file.
struct Listing {
  int site;
  int role;
  const FileRow& row;
};

// Every file of every site, in the batch list's order: a file named twice, or a job line that
// repeats an earlier one, is shown at each place.
std::vector<Listing> listings(const CrystalInputs& in) {
  std::vector<Listing> all;
  for (const SiteJob& site : in.sites) {
    for (int f = 0; f < 3; ++f) {
      if (site.rows[f] >= 0) all.push_back({site.site, f, in.rows[site.rows[f]]});
    }
  }
  return all;
}

std::vector<std::string> row_cells(const Listing& listing) {
  const FileRow& row = listing.row;
  const LogSummary& s = row.summary;
  const bool read = row.read == LogReadStatus::ok;
  const char* const end = !read                         ? "-"
                          : s.engine == Engine::unknown ? "?"
                                                        : termination_name(s.termination);
  return {std::to_string(listing.site),
          kRoles[listing.role],
          row.file,
          read ? engine_name(s.engine)
               : (row.read == LogReadStatus::cannot_open ? "missing" : "unreadable"),
          end,
          s.has_charge ? std::to_string(s.charge) : "-",
          s.has_charge ? std::to_string(s.multiplicity) : "-",
          s.atom_count > 0 ? std::to_string(s.atom_count) : "-",
          or_dash(s.formula),
          or_dash(s.method),
          or_dash(s.basis),
          or_dash(s.job_type),
          s.scf_count >= 0 ? std::to_string(s.scf_count) : "-",  // "-": not counted
          energy_text(row)};
}

// Prints a row of cells (already printable) in columns of `widths` display columns.
void print_cells(std::FILE* out, const std::vector<std::string>& cells,
                 const std::vector<std::size_t>& widths) {
  std::string line;
  for (std::size_t c = 0; c < cells.size(); ++c) {
    line += cells[c];
    if (c + 1 < cells.size()) line += std::string(widths[c] - display_width(cells[c]) + 2, ' ');
  }
  std::fprintf(out, "%s\n", line.c_str());
}

std::string json_int_or_null(bool known, int value) {
  return known ? std::to_string(value) : "null";
}

std::string json_text_or_null(const std::string& text) {
  return text.empty() ? "null" : json_string(text);
}

}  // namespace

std::string json_string(std::string_view text) {
  std::string s = "\"";
  for (std::size_t at = 0; at < text.size();) {
    char32_t c = 0;
    const std::size_t length = utf8_sequence(text, at, c);
    const auto byte = static_cast<unsigned char>(text[at]);
    if (length > 1 || (length == 1 && c >= 0x20 && c != '"' && c != '\\' && c != 0x7f)) {
      s.append(text, at, length);
      at += length;
      continue;
    }
    // One byte that must be escaped: a quote, a backslash, a control character, or a byte
    // that is not UTF-8, which stands for the code point of the same number.
    switch (byte) {
      case '"':
        s += "\\\"";
        break;
      case '\\':
        s += "\\\\";
        break;
      case '\n':
        s += "\\n";
        break;
      case '\t':
        s += "\\t";
        break;
      case '\r':
        s += "\\r";
        break;
      case '\b':
        s += "\\b";
        break;
      case '\f':
        s += "\\f";
        break;
      default:
        s += format_text("\\u%04x", static_cast<unsigned>(byte));
    }
    ++at;
  }
  return s + "\"";
}

std::string finding_place(const Finding& f) {
  std::string where = f.site > 0 ? "site " + std::to_string(f.site) : "";
  if (!f.file.empty()) where += (where.empty() ? "" : ", ") + printable_text(f.file);
  return where.empty() ? "" : " (" + where + ")";
}

std::string finding_line(const Finding& f) {
  return format_text("%-13s  %s%s: %s", severity_name(f.severity), f.code.c_str(),
                     finding_place(f).c_str(), printable_text(f.message).c_str());
}

std::string finding_json(const Finding& f) {
  return "{\"code\": " + json_string(f.code) + ", \"severity\": \"" + severity_name(f.severity) +
         "\", \"site\": " + json_int_or_null(f.site > 0, f.site) +
         ", \"file\": " + json_text_or_null(f.file) + ", \"message\": " + json_string(f.message) +
         "}";
}

std::string shortest_number(double value) {
  // A normal double that a decimal of at most 15 significant digits reads back as is that
  // decimal at 15 digits, once %g has dropped the trailing zeros: 15-digit decimals lie at
  // least 10^-15 of the value apart, the double at most 2^-53 of it from the decimal. So the
  // search starts at 15 digits; a subnormal, whose precision is less, from 1.
  const int first = std::isnormal(value) || value == 0.0 ? 15 : 1;
  for (int digits = first; digits < 17; ++digits) {
    const std::string text = format_text("%.*g", digits, value);
    if (std::strtod(text.c_str(), nullptr) == value) return text;
  }
  return format_text("%.17g", value);
}

void print_check_table(std::FILE* out, const CrystalInputs& in,
                       const std::vector<Finding>& findings) {
  std::fprintf(out, "Checking batch file: %s (-qcflag %d)\n", printable_text(in.batch_name).c_str(),
               in.engine_code);
  const std::vector<Listing> all = listings(in);
  if (!all.empty()) {
    std::vector<std::vector<std::string>> table{{std::begin(kColumns), std::end(kColumns)}};
    for (const Listing& listing : all) table.push_back(row_cells(listing));
    std::vector<std::size_t> widths(kColumnCount, 0);
    for (auto& cells : table) {
      for (std::size_t c = 0; c < kColumnCount; ++c) {
        cells[c] = printable_text(cells[c]);
        widths[c] = std::max(widths[c], display_width(cells[c]));
      }
    }
    std::fprintf(out, "\n");
    for (const auto& cells : table) print_cells(out, cells, widths);
  }
  std::fprintf(out, "\n");
  if (findings.empty()) {
    std::fprintf(out, "No findings: get_inter_ener would succeed.\n");
    return;
  }
  std::fprintf(out, "Findings:\n");
  for (const Finding& f : findings) {
    std::fprintf(out, "  %s\n", finding_line(f).c_str());
  }
  const long stops = std::count_if(findings.begin(), findings.end(),
                                   [](const Finding& f) { return f.severity == Severity::stop; });
  std::fprintf(out, "\n%s: %ld finding(s) stop the run, %ld other(s).\n",
               stops > 0 ? "get_inter_ener would stop" : "get_inter_ener would run", stops,
               static_cast<long>(findings.size()) - stops);
}

void print_check_json(std::FILE* out, const CrystalInputs& in,
                      const std::vector<Finding>& findings) {
  std::fprintf(out, "{\n  \"batch\": %s,\n  \"engine_code\": %d,\n",
               json_string(in.batch_name).c_str(), in.engine_code);
  std::fprintf(out, "  \"would_succeed\": %s,\n  \"status\": %d,\n",
               would_succeed(findings) ? "true" : "false", check_status(findings));
  std::fprintf(out, "  \"rows\": [");
  const std::vector<Listing> all = listings(in);
  for (std::size_t i = 0; i < all.size(); ++i) {
    const FileRow& row = all[i].row;
    const LogSummary& s = row.summary;
    const bool read = row.read == LogReadStatus::ok;
    std::fprintf(out, "%s\n    {\"site\": %d, \"role\": \"%s\", \"file\": %s, \"readable\": %s, ",
                 i == 0 ? "" : ",", all[i].site, kRoles[all[i].role], json_string(row.file).c_str(),
                 read ? "true" : "false");
    std::fprintf(out, "\"engine\": %s, \"termination\": %s, ",
                 read ? json_string(engine_name(s.engine)).c_str() : "null",
                 read && s.engine != Engine::unknown
                     ? json_string(termination_name(s.termination)).c_str()
                     : "null");
    std::fprintf(out, "\"charge\": %s, \"multiplicity\": %s, \"atoms\": %s, ",
                 json_int_or_null(s.has_charge, s.charge).c_str(),
                 json_int_or_null(s.has_charge, s.multiplicity).c_str(),
                 json_int_or_null(s.atom_count > 0, s.atom_count).c_str());
    std::fprintf(out, "\"formula\": %s, \"method\": %s, \"basis\": %s, \"job_type\": %s, ",
                 json_text_or_null(s.formula).c_str(), json_text_or_null(s.method).c_str(),
                 json_text_or_null(s.basis).c_str(), json_text_or_null(s.job_type).c_str());
    std::fprintf(out, "\"scf_energies\": %s, \"energy_hartree\": %s}",
                 json_int_or_null(read && s.scf_count >= 0, s.scf_count).c_str(),
                 row.energy == SpEnerStatus::found && std::isfinite(row.hartree)
                     ? shortest_number(row.hartree).c_str()
                     : "null");
  }
  std::fprintf(out, "%s],\n  \"findings\": [", all.empty() ? "" : "\n  ");
  for (std::size_t i = 0; i < findings.size(); ++i) {
    std::fprintf(out, "%s\n    %s", i == 0 ? "" : ",", finding_json(findings[i]).c_str());
  }
  std::fprintf(out, "%s]\n}\n", findings.empty() ? "" : "\n  ");
}
