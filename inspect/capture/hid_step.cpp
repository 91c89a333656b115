// The HID step: the device, then its six feature reports as hex dumps.

#include "inspect/capture/capture_parser.h"
#include "inspect/capture/hexdump_text.h"

namespace inspect {
namespace {

constexpr std::size_t dump_line_bytes = 16;

}  // namespace

bool capture_parser::read_hid(std::size_t first_row) {
  const auto requests = layouts::step_requests(layouts::harvest_step::hid_reports);
  const auto reports = requests.subspan(1);
  failure_parse parsed;
  if (first_row <= static_cast<std::size_t>(request::hid_device)) {
    if (peek_failure(layouts::hid_device_sites, parsed)) {
      take_failure(parsed);
      const failure_kind kind = parsed.site->kind;
      const call_outcome outcome = kind == failure_kind::device_missing ? call_outcome::missing
                                   : parsed.site->line == layouts::hid_no_device.line
                                       ? call_outcome::not_created
                                       : call_outcome::open_failed;
      add_call(request::hid_device, outcome, parsed.failure.value, {}, parsed.failure.line);
      keep(std::move(parsed.failure), request::hid_device);
      return true;
    }
    if (!at_banner(reports.front().id)) {
      if (!model_.has_stderr && at_known_line()) {
        add_call(request::hid_device, call_outcome::missing, 0, {}, number());
        return true;
      }
      if (!recover(static_cast<std::size_t>(reports.front().id),
                   "the first HID report banner or the device's failure line"))
        return false;
    }
    add_call(request::hid_device, call_outcome::reply, 0, {}, number());
  }
  for (const layouts::harvest_request& entry : reports) {
    const auto row = static_cast<std::size_t>(entry.id);
    if (row < first_row) continue;
    hid_report report;
    report.about = entry.id;
    report.line = number();
    if (at_banner(entry.id)) {
      ++at_;
    } else if (!recover(row, "the banner \"" + std::string(entry.banner) + "\"")) {
      return false;
    } else if (at_banner(entry.id)) {
      ++at_;
    }
    if (peek_failure({&entry.step_failure, 1}, parsed)) {
      take_failure(parsed);
      report.failed = true;
      add_call(entry.id, call_outcome::refused, parsed.failure.value, {}, parsed.failure.line);
      keep(std::move(parsed.failure), entry.id);
      harvest_->hid.push_back(std::move(report));
      return true;
    }
    while (!done() && lines_[at_].kind == token_kind::text && looks_like_hexdump(peek()) &&
           report.bytes.size() < entry.capacity) {
      std::string why;
      if (!read_hexdump_line(peek(), report.bytes.size(), report.bytes, why)) {
        report.damaged = true;
        skip_block(number(), "the dump of " + std::string(entry.label), why);
        break;
      }
      ++at_;
      if (report.bytes.size() % dump_line_bytes != 0) break;
    }
    const bool last = entry.id == reports.back().id;
    if (report.bytes.empty() && !report.damaged && !last &&
        !at_banner(static_cast<request>(row + 1)) && !model_.has_stderr && at_known_line()) {
      // Standard output alone: the report was refused out of sight.
      report.failed = true;
      add_call(entry.id, call_outcome::refused, unseen_refusal, {}, report.line);
      harvest_->hid.push_back(std::move(report));
      return true;
    }
    add_call(entry.id, call_outcome::reply, 0, report.bytes, report.line);
    harvest_->hid.push_back(std::move(report));
  }
  return true;
}

}  // namespace inspect
