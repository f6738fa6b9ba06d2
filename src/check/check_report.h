// The check's report of a crystal: an aligned table of the files and the findings for a
// person, or one JSON document with the same content for a workflow script.
#ifndef GET_INTER_ENER_CHECK_REPORT_H
#define GET_INTER_ENER_CHECK_REPORT_H

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "crystal_findings.h"

// `text` as a JSON string, quotes included: quote, backslash and control characters escaped
// (\n, \t, \r, \b, \f, others as \u00XX); other bytes, UTF-8 included, are kept.
//
//   "a\"b\n"  ->  "\"a\\\"b\\n\""
std::string json_string(std::string_view text);

// `value` as the shortest decimal text that reads back as the same double.
//
//   -693.329689346 -> "-693.329689346";   0.1 -> "0.1"
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
