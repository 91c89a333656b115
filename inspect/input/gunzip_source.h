#pragma once

// gzip inflated from another byte source: a .gz member of an archive, or a
// .gz capture on a pipe. Members follow one another as gzip allows; bytes
// after the last that start no member are let be, as zlib's own reader does.

#include <memory>

#include "inspect/input/byte_source.h"

namespace inspect {

// Whether `start` opens a gzip member.
bool gzip_magic(std::string_view start);

std::unique_ptr<byte_source> gunzip(std::unique_ptr<byte_source> compressed);

}  // namespace inspect
