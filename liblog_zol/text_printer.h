#pragma once

// The collector's line: "{ " and the items " 'key':value," with their widths,
// the type ids, the byte list and the calendar time, then "}".

#include "liblog_zol/line_builder.h"
#include "liblog_zol/local_zone.h"
#include "liblog_zol/record_printer.h"

namespace zol {

class text_printer final : public record_printer {
 public:
  void begin(const record_header& header) override;
  void field(std::string_view key, std::uint8_t width, const field_value& value) override;
  void fields(const profile_record& record, std::span<const payload_field> layout) override;
  void end(std::span<const std::uint8_t> bytes, const std::uint64_t* calendar) override;
  // The calendar time's zone; the C library's unless set.
  void set_zone(const local_zone& zone) noexcept { zone_ = &zone; }

  std::string take() const { return line_.take(); }
  std::string_view view() const noexcept { return line_.view(); }
  const char* c_str() { return line_.c_str(); }
  void clear() noexcept { line_.clear(); }

 private:
  void item(std::string_view key, std::uint8_t width, const field_value& value);
  void number_item(std::string_view key, std::uint8_t width, std::uint64_t value);

  line_builder line_;
  std::uint32_t type_word_ = 0;
  const local_zone* zone_ = &c_library_zone();
};

}  // namespace zol
