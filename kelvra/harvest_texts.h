#pragma once

// The texts and failure line numbers of the collection sequence, in the order
// it prints them. Header-only data: the desk tools read captures by them.

#include <cstdint>
#include <string_view>

namespace harvest_texts {

inline constexpr std::string_view stats_banner = "==========kelvra get-stats==============";
inline constexpr std::int64_t line_stats_failed = 130;

struct state_request {
  std::string_view banner;
  const char* service;
  std::uint32_t command;
  std::int64_t failure_line;
};

inline constexpr state_request state_requests[] = {
    {"==========kelvra lyn 0xd0==============", "lyn", 208, 148},
    {"==========kelvra btmspk 0xd0==============", "btmspk", 208, 153},
    {"==========kelvra zol-button 0xd0==============", "zol-button", 208, 159},
    {"==========kelvra zol-button 0xd1==============", "zol-button", 209, 164},
};

inline constexpr std::string_view profile_banner =
    "==========kelvra zol-button profile==============";

inline constexpr std::string_view assets_banner =
    "==========kelvra zol-button get-assets==============";
inline constexpr std::int64_t line_assets_failed = 189;

inline constexpr std::int64_t line_no_pairs = 211;
inline constexpr std::int64_t line_no_matching = 215;
inline constexpr std::int64_t line_no_device_service = 221;
inline constexpr std::int64_t line_no_device = 224;
inline constexpr std::int64_t line_device_open_failed = 227;

struct feature_report {
  std::uint8_t id;
  std::string_view banner;
  std::int64_t failure_line;
};

inline constexpr feature_report feature_reports[] = {
    {0xe0, "==============feedscope get 0xe0 -u 0xFF00,0x0020===============", 232},
    {0xb4, "==============feedscope get 0xb4 -u 0xFF00,0x0020===============", 238},
    {0xe1, "==============feedscope get 0xe1 -u 0xFF00,0x0020===============", 244},
    {0xe2, "==============feedscope get 0xe2 -u 0xFF00,0x0020===============", 250},
    {0xe3, "==============feedscope get 0xe3 -u 0xFF00,0x0020===============", 256},
    {0xe4, "==============feedscope get 0xe4 -u 0xFF00,0x0020===============", 262},
};

}  // namespace harvest_texts
