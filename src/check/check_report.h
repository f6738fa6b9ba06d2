// The check's report of a crystal: an aligned table of the files and the findings for a
// person, or one JSON document with the same content for a workflow script.
#ifndef GET_INTER_ENER_CHECK_REPORT_H
#define GET_INTER_ENER_CHECK_REPORT_H

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "crystal_findings.h"

// `text` as a JSON string, quotes included, valid JSON in valid UTF-8 whatever the bytes: the
// quote, the backslash and control characters escaped (\n, \t, \r, \b, \f, others and DEL as
// \u00XX); well-formed UTF-8 kept; each byte that is not part of well-formed UTF-8 written as
// \u00XX, XX the byte's value, so that a reader can tell the bytes again (\u0080 to \u00ff
// never stand for a character of the text, which would be kept as its UTF-8 bytes).
//
//   "a\"b\n"  ->  "\"a\\\"b\\n\"";   "\xff"  ->  "\"\\u00ff\""
std::string json_string(std::string_view text);

// Where a finding points, made printable: " (site 2, m2_anion.log)", or "" when it concerns no
// one site and no one file.
std::string finding_place(const Finding& finding);

// A finding as a line of the check's report, without indent or line feed, made printable:
//
//   "wrong-number   charge-mismatch (site 2, m2.log): the cation holds charge 2; ..."
std::string finding_line(const Finding& finding);

// A finding as a JSON object: {"code", "severity", "site" (null for none), "file" (null for
// none), "message"}.
//
//   {"charge-mismatch", wrong_number, 2, "m2.log", "..."}  ->  {"code": "charge-mismatch", ...}
std::string finding_json(const Finding& finding);

// `value` as %g text with the fewest significant digits that reads back as the same double
// (in fixed notation up to 15 digits before the point).
//
//   -693.329689346 -> "-693.329689346";   0.1 -> "0.1";   2245870.0 -> "2245870"
std::string shortest_number(double value);

// The table of the rows, one line per file in columns fitted to their widths, then the
// findings and the verdict, on `out`.
//
//   site  role     file            engine    end     charge  mult  atoms  formula ...
void print_check_table(std::FILE* out, const CrystalInputs& in,
                       const std::vector<Finding>& findings);

// The JSON document: {"batch", "engine_code", "would_succeed", "status", "rows", "findings"};
// unknown values of a row are null.
void print_check_json(std::FILE* out, const CrystalInputs& in,
                      const std::vector<Finding>& findings);

#endif  // GET_INTER_ENER_CHECK_REPORT_H
