#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

// A reply buffer as large as the collector offers.
inline constexpr std::size_t reply_size = 4096;

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
