# The libraries that decode compressed engine outputs, found here so that the tool and the
# tests see the same ones. Each format whose library is found adds to
#   COMPRESSION_DECODERS     its decoder's source in src/reader/
#   COMPRESSION_LIBRARIES    the library's target
#   COMPRESSION_DEFINITIONS  WITH_ZLIB, WITH_BZIP2, WITH_LZMA or WITH_ZSTD
#   COMPRESSION_FORMATS      its name: gzip, bzip2, xz or zstd
# and a missing one is left out with a notice: that build refuses the format's logs, naming
# the library.
find_package(ZLIB)
find_package(BZip2)
find_package(LibLZMA)
# zstd: its own CMake package where it ships one, pkg-config otherwise.
find_package(zstd CONFIG QUIET)
if(TARGET zstd::libzstd_shared)
  set(zstd_target zstd::libzstd_shared)
elseif(TARGET zstd::libzstd_static)
  set(zstd_target zstd::libzstd_static)
elseif(NOT CMAKE_DISABLE_FIND_PACKAGE_zstd)
  find_package(PkgConfig QUIET)
  if(PKG_CONFIG_FOUND)
    pkg_check_modules(LIBZSTD QUIET IMPORTED_TARGET libzstd)
    set(zstd_target PkgConfig::LIBZSTD)
  endif()
endif()

set(COMPRESSION_DECODERS "")
set(COMPRESSION_LIBRARIES "")
set(COMPRESSION_DEFINITIONS "")
set(COMPRESSION_FORMATS "")
# format, library target, library, compile definition, decoder, Debian package
foreach(codec
    "gzip;ZLIB::ZLIB;zlib;WITH_ZLIB;decompress_gzip.cpp;zlib1g-dev"
    "bzip2;BZip2::BZip2;libbz2;WITH_BZIP2;decompress_bzip2.cpp;libbz2-dev"
    "xz;LibLZMA::LibLZMA;liblzma;WITH_LZMA;decompress_xz.cpp;liblzma-dev"
    "zstd;${zstd_target};libzstd;WITH_ZSTD;decompress_zstd.cpp;libzstd-dev")
  list(GET codec 0 format)
  list(GET codec 1 target)
  list(GET codec 2 library)
  list(GET codec 3 definition)
  list(GET codec 4 decoder)
  list(GET codec 5 debian)
  if(target AND TARGET ${target})
    list(APPEND COMPRESSION_DECODERS ${decoder})
    list(APPEND COMPRESSION_LIBRARIES ${target})
    list(APPEND COMPRESSION_DEFINITIONS ${definition})
    list(APPEND COMPRESSION_FORMATS ${format})
    message(STATUS "${format} logs: read with ${library}")
  else()
    message(STATUS "${format} logs: ${library} not found (Debian package ${debian}); "
      "this build refuses them")
  endif()
endforeach()
