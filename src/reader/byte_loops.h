// The loops that look at every byte of a text, each chosen once, at run time, for the widest
// vector instructions the processor has.
#ifndef GET_INTER_ENER_BYTE_LOOPS_H
#define GET_INTER_ENER_BYTE_LOOPS_H

#include <cstddef>
#include <string_view>

// Start of the last occurrence of `marker` (not empty) that lies wholly in the first `limit`
// bytes of `text`, or npos.
//
//   rfind_marker("SCF Done SCF Done", "SCF Done", 16)  ->  0
std::size_t rfind_marker(std::string_view text, std::string_view marker, std::size_t limit);

#endif  // GET_INTER_ENER_BYTE_LOOPS_H
