#pragma once

// One record as one JSON object (a line of JSON Lines): the header ids with
// their names, the payload as typed values under the text line's keys in
// snake_case, the bytes in hex and the calendar time in ISO 8601. Every
// record has the same top-level keys, null where a value is absent; a payload
// key that comes again gets "_2", "_3", ... so no object repeats a key.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "liblog_zol/line_builder.h"
#include "liblog_zol/local_zone.h"
#include "liblog_zol/record_printer.h"

namespace zol {

inline constexpr int records_schema_version = 1;

// Where a record came from, as far as the input says.
struct record_origin {
  std::uint64_t ordinal = 0;           // position in the input, from 0
  std::string_view source;             // "profile" or "ZOL_profile"; empty: unknown
  std::optional<std::uint32_t> pass;   // from 1
  std::optional<std::uint32_t> index;  // within the pass, from 0
};

class json_printer final : public record_printer {
 public:
  void set_origin(const record_origin& origin) noexcept { origin_ = origin; }
  // The calendar time's zone; the C library's unless set.
  void set_zone(const local_zone& zone) noexcept { zone_ = &zone; }
  // Payload integers from 2^53 on (either sign) as strings of their digits:
  // a browser's numbers would not keep them. Off for the records' JSON.
  void set_exact_in_browsers(bool exact) noexcept { exact_ = exact; }
  // Members written ahead of the record's own, as JSON ("\"a\":1,\"b\":2"):
  // a table row is the record's object with its keys in front.
  void set_leading(std::string_view members) noexcept { leading_ = members; }

  void begin(const record_header& header) override;
  void field(std::string_view key, std::uint8_t width, const field_value& value) override;
  void fields(const profile_record& record, std::span<const payload_field> layout) override;
  void end(std::span<const std::uint8_t> bytes, const std::uint64_t* calendar) override;

  // The object, without a newline.
  std::string_view view() const noexcept { return out_.view(); }
  // Its payload object alone.
  std::string_view payload() const noexcept {
    return out_.view().substr(payload_start_, payload_end_ - payload_start_);
  }

 private:
  // How often `key` has come in this record, this time included.
  unsigned key_count(std::string_view key, std::uint64_t signature);
  void write_field(std::string_view key, unsigned repeat, const field_value& value);

  struct seen_key {
    std::string_view key;
    unsigned count;
  };

  line_builder out_;
  record_origin origin_;
  const local_zone* zone_ = &c_library_zone();
  std::string_view leading_;
  bool first_field_ = true;
  bool exact_ = false;
  std::size_t payload_start_ = 0;
  std::size_t payload_end_ = 0;
  seen_key seen_[64];
  std::uint64_t seen_signatures_[64];
  std::uint64_t seen_mask_ = 0;
  std::size_t seen_count_ = 0;
};

// "2024-03-04T10:15:02.123456+01:00" in the zone; false when the instant has
// no local time there.
bool iso_calendar_time(std::uint64_t microseconds, std::string& out,
                       const local_zone& zone = c_library_zone());

}  // namespace zol
