#pragma once

#include "liblog_zol/byte_reader.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

// Device gains and thresholds carry 16 fractional bits.
inline constexpr double fixed_point_scale = 1.52587890625e-05;

// A report label: the caption, blank-padded to `width`, then `tail`. Built as
// text so that the output stream's width and alignment are left alone.
std::string padded_label(std::string_view caption, std::size_t width,
                         std::string_view tail);

// A 32-bit counter of a device record.
struct counter_field {
  std::string_view caption;
  std::size_t offset;
  bool is_signed = false;
};

// One line a field, in table order: its label, then its value in decimal.
void print_counters(const byte_reader& record,
                    std::span<const counter_field> fields, std::size_t width,
                    std::string_view tail);
