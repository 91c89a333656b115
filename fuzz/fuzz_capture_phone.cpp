// Any text as a capture: refused as no capture, or read into a model whose
// every view is written (each trace time at least 0 and below 2^53 µs) and
// whose phone, of the readable part, loads and runs a whole harvest holding
// nothing at its end.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/fuzz_support.h"
#include "inspect/capture/capture_reader.h"
#include "inspect/outputs/phone_writer.h"
#include "inspect/outputs/report_writer.h"
#include "inspect/outputs/summary_view.h"
#include "inspect/outputs/timeline_view.h"
#include "inspect/outputs/trace_view.h"
#include "kelvra/collector.h"

namespace {

// Every "ts": in the trace is a number from 0 to 2^53.
void check_trace_times(std::string_view trace) {
  constexpr std::string_view key = "\"ts\":";
  for (std::size_t at = trace.find(key); at != std::string_view::npos; at = trace.find(key, at + 1)) {
    std::size_t end = at + key.size();
    std::uint64_t value = 0;
    if (end >= trace.size() || trace[end] == '-') __builtin_trap();
    while (end < trace.size() && trace[end] >= '0' && trace[end] <= '9') {
      if (value > (std::uint64_t{1} << 53) / 10) __builtin_trap();
      value = value * 10 + static_cast<std::uint64_t>(trace[end++] - '0');
    }
    if (value >= std::uint64_t{1} << 53) __builtin_trap();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  inspect::capture_model model;
  inspect::input_fault fault;
  inspect::capture_options options;
  options.years = {std::nullopt, 2024};
  options.zone = "America/New_York";
  options.messages = nullptr;
  if (!inspect::read_capture(inspect::memory_source(text), "fuzz.txt", options, model, fault)) {
    if (fault.file != "fuzz.txt" || fault.fault.empty()) __builtin_trap();
    return 0;
  }
  if (model.harvests.empty()) __builtin_trap();
  std::string out = inspect::write_report(model);
  for (std::size_t h = 0; h < model.harvests.size(); ++h) {
    out.clear();
    inspect::write_trace(model, h, out);
    check_trace_times(out);
    out.clear();
    inspect::write_summary(model, h, *inspect::text_summary_printer(out));
    out.clear();
    inspect::write_summary(model, h, *inspect::json_summary_printer(out));
    out.clear();
    inspect::write_timeline(model, h, out);
  }
  std::string description;
  inspect::phone_fault phone;
  std::vector<std::string> assumed;
  if (!inspect::write_phone(model, true, description, phone, assumed)) {
    // Only a service answering two ways is beyond the readable part.
    if (phone.line == 0 || phone.message.find("one phone cannot answer so") == std::string::npos)
      __builtin_trap();
    return 0;
  }
  if (!tmxsim::load_description(description, "phone.json").empty()) __builtin_trap();
  harvest();
  trap_unless_nothing_held();
  tmxsim::reset_state();
  return 0;
}
