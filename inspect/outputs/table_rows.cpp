#include "inspect/outputs/table_rows.h"

#include <algorithm>

#include "inspect/outputs/json_facts.h"
#include "inspect/outputs/json_writer.h"
#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/json_printer.h"

namespace inspect {
namespace {

void identity(json_writer& json, const capture_identity& id, std::size_t harvest) {
  json.key("capture").value(id.path);
  json.key("capture_sha256").value(id.sha256);
  json.key("harvest").value(std::uint64_t{harvest + 1});
}

template <class T>
void optional_value(json_writer& json, const std::optional<T>& value) {
  if (value)
    json.value(*value);
  else
    json.null();
}

void press(json_writer& json, const capture_model& model, const harvest_facts& facts) {
  const press_chain* chain = facts.press ? &*facts.press : nullptr;
  json.key("click_count");
  optional_value(json, chain ? std::optional(chain->stats.click_count) : std::nullopt);
  json.key("clicks").begin_array();
  for (unsigned k = 0; chain && k < chain->clicks; ++k) {
    json.begin_object();
    json.key("click").value(std::uint64_t{k + 1});
    for (const auto& [kind, key] : {std::pair{step_kind::finger_to_down, "finger_to_down_us"},
                                    std::pair{step_kind::down_to_asset, "down_to_asset_us"},
                                    std::pair{step_kind::held, "held_us"},
                                    std::pair{step_kind::up_to_asset, "up_to_asset_us"}}) {
      const press_step* step = facts.find_step(kind, k);
      json.key(key);
      optional_value(json, step ? std::optional(chain->duration(*step)) : std::nullopt);
    }
    json.end_object();
  }
  json.end_array();
  json.key("finger_on_us");
  optional_value(json, chain ? std::optional(chain->stats.finger_on) : std::nullopt);
  json.key("finger_on_calendar_time");
  optional_value(json, chain ? calendar_of(model, chain->stats.finger_on) : std::nullopt);
  json.key("gorvin_scans");
  optional_value(json, chain ? std::optional(chain->stats.gorvin_scans) : std::nullopt);
  json.key("lumet_scans");
  optional_value(json, chain ? std::optional(chain->stats.lumet_scans) : std::nullopt);
  json.key("press_agrees");
  optional_value(json, chain && chain->checked ? std::optional(chain->disagreements.empty())
                                                : std::nullopt);
}

void records(json_writer& json, const harvest_facts& facts) {
  json.key("records").value(std::uint64_t{facts.records.size()});
  json.key("records_by_category");
  write_categories(json, facts);
  json.key("records_by_source");
  write_sources(json, facts);
  time_span all;
  for (const category_count& c : facts.categories) {
    all.add(c.span.first);
    all.add(c.span.last);
  }
  const bool any = !facts.records.empty();
  json.key("first_us");
  optional_value(json, any ? std::optional(all.first) : std::nullopt);
  json.key("last_us");
  optional_value(json, any ? std::optional(all.last) : std::nullopt);
  json.key("span_us");
  optional_value(json, any ? std::optional(all.last - all.first) : std::nullopt);
  std::uint64_t lost = 0, repeated = 0, late = 0;
  for (const sequence_run& run : facts.runs) {
    lost += run.lost;
    repeated += run.repeats.size();
    late += run.out_of_order;
  }
  json.key("sequence_lost").value(lost);
  json.key("sequence_repeated").value(repeated);
  json.key("sequence_out_of_order").value(late);
  json.key("records_off_axis").value(std::uint64_t{facts.off_axis});
}

// The damage within a harvest's lines; what no line places goes with the
// last harvest.
std::vector<damage> damage_of(const capture_model& model, std::size_t harvest) {
  const std::uint64_t first = harvest == 0 ? 0 : model.harvests[harvest].line;
  const bool last = harvest + 1 == model.harvests.size();
  const std::uint64_t end = last ? ~std::uint64_t{0} : model.harvests[harvest + 1].line;
  std::vector<damage> found;
  for (const damage& d : model.damage)
    if ((d.line == 0 && last) || (d.line != 0 && d.line >= first && d.line < end)) found.push_back(d);
  return found;
}

void harvest_row(const capture_model& model, std::size_t index, const capture_identity& id,
                 std::string& out) {
  const harvest_model& harvest = model.harvests[index];
  json_writer json(out);
  json.begin_object();
  identity(json, id, index);
  json.key("harvests").value(std::uint64_t{model.harvests.size()});
  json.key("line").value(harvest.line);
  json.key("standard_error").value(model.has_stderr);
  press(json, model, harvest.facts);
  records(json, harvest.facts);
  json.key("failures").value(std::uint64_t{harvest.failures.size()});
  json.key("cut");
  optional_value(json, harvest.cut.empty() ? std::nullopt : std::optional(harvest.cut));
  const std::vector<damage> found = damage_of(model, index);
  json.key("damaged").value(std::any_of(found.begin(), found.end(), [](const damage& d) { return d.lost; }));
  json.key("damage");
  write_damage(json, found);
  json.end_object();
  out += '\n';
}

// The record's own row as `records` writes it, the capture's keys in front.
void record_rows(const capture_model& model, std::size_t index, const capture_identity& id,
                 std::uint64_t& ordinal, std::string& out) {
  const harvest_model& harvest = model.harvests[index];
  std::string head;
  json_writer json(head);
  json.begin_object();
  identity(json, id, index);
  zol::json_printer printer;
  printer.set_zone(*model.zone);
  zol::no_clock none;
  std::optional<zol::fixed_clock> pair;
  if (model.pair) pair.emplace(*model.pair);
  for (const profile_entry& entry : harvest.profile) {
    zol::record_origin origin;
    origin.ordinal = ordinal++;
    if (entry.source != record_source::unknown) origin.source = source_name(entry.source);
    printer.set_origin(origin);
    zol::clock_source& clock =
        pair && (entry.calendar_text || model.pair_given) ? static_cast<zol::clock_source&>(*pair) : none;
    decode_profile_record(printer, entry.bytes.data(), clock);
    out += head;
    out += ',';
    out += printer.view().substr(1);
    out += '\n';
  }
}

void failure_rows(const capture_model& model, std::size_t index, const capture_identity& id,
                  std::string& out) {
  for (const failure_line& f : model.harvests[index].failures) {
    std::string row;
    json_writer json(row);
    json.begin_object();
    identity(json, id, index);
    const std::string_view service = layouts::request_row(f.about).service;
    json.key("service");
    if (service.empty())
      json.value("HID device");
    else
      json.value(service);
    write_failure_members(json, f);
    json.end_object();
    out += row;
    out += '\n';
  }
}

}  // namespace

void add_capture_rows(const capture_model& model, const capture_identity& id, table_rows& rows) {
  std::uint64_t ordinal = 0;
  for (std::size_t h = 0; h < model.harvests.size(); ++h) {
    harvest_row(model, h, id, rows.harvests);
    record_rows(model, h, id, ordinal, rows.records);
    failure_rows(model, h, id, rows.failures);
  }
}

void add_unreadable_row(const capture_identity& id, const input_fault& fault, table_rows& rows) {
  json_writer json(rows.unreadable);
  json.begin_object();
  json.key("capture").value(id.path);
  json.key("capture_sha256");
  if (id.sha256.empty())
    json.null();
  else
    json.value(id.sha256);
  json.key("where").value(fault.where);
  json.key("fault").value(fault.fault);
  json.end_object();
  rows.unreadable += '\n';
}

}  // namespace inspect
