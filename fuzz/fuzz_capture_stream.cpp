// Any bytes, read as kelvra-inspect reads them for decode and records (the
// form told from the content, the clock pair taken back from the calendar
// texts) and each record through both printers.

#include <cstdint>
#include <cstdio>
#include <string_view>

#include "inspect/capture/record_stream.h"
#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/json_printer.h"
#include "liblog_zol/text_printer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static std::FILE* const discard = std::fopen("/dev/null", "w");
  if (discard == nullptr) __builtin_trap();
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  inspect::stream_options options;
  options.progress = false;
  // The current year and the zone handed in, so that a run depends on
  // neither the date nor the machine.
  options.years = {std::nullopt, 2024};
  options.zone = "America/New_York";
  zol::text_printer text;
  zol::json_printer json;
  const int status = inspect::for_each_record(
      inspect::memory_source(bytes), options, discard, [&](const inspect::stream_record& record) {
        text.set_zone(record.zone);
        json.set_zone(record.zone);
        decode_profile_record(text, record.input.bytes.data(), record.clock);
        decode_profile_record(json, record.input.bytes.data(), record.clock);
        if (text.view().empty() || json.view().front() != '{') __builtin_trap();
      });
  if (status < 0 || status > 2) __builtin_trap();
  return 0;
}
