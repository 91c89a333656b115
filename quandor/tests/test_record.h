#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

// A reply buffer as large as the collector offers.
inline std::vector<std::uint8_t> reply_buffer(std::size_t size = 4096) {
  return std::vector<std::uint8_t>(size, 0);
}

// Stores `value` little-endian at `offset`, however unaligned.
template <class T>
void put(std::vector<std::uint8_t>& buffer, std::size_t offset, T value) {
  std::memcpy(buffer.data() + offset, &value, sizeof value);
}

template <class Print>
std::string stdout_of(Print print) {
  testing::internal::CaptureStdout();
  print();
  return testing::internal::GetCapturedStdout();
}
