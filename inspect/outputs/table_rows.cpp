#include "inspect/outputs/table_rows.h"

#include <algorithm>

#include "inspect/outputs/json_facts.h"
#include "inspect/outputs/json_writer.h"
#include "inspect/outputs/record_rows.h"

namespace inspect {
namespace {

void member(json_writer& json, const capture_identity& id) {
  json.key("member");
  if (id.member)
    json.value(*id.member);
  else
    json.null();
}

void identity(json_writer& json, const capture_identity& id, std::size_t harvest) {
  json.key("capture").value(id.path);
  member(json, id);
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
  const time_span& all = facts.span;
  const bool any = all.count != 0;
  json.key("first_us");
  optional_value(json, any ? std::optional(all.first) : std::nullopt);
  json.key("last_us");
  optional_value(json, any ? std::optional(all.last) : std::nullopt);
  json.key("span_us");
  optional_value(json, any ? std::optional(all.last - all.first) : std::nullopt);
  json.key("sequence_lost").value(facts.sequence.lost);
  json.key("sequence_repeated").value(facts.sequence.repeated);
  json.key("sequence_out_of_order").value(facts.sequence.out_of_order);
  json.key("records_off_axis").value(std::uint64_t{facts.off_axis});
}

void harvest_row(const capture_model& model, std::size_t index, const capture_identity& id,
                 std::string& out) {
  const harvest_model& harvest = model.harvests[index];
  const harvest_facts& facts = harvest.facts;
  json_writer json(out);
  json.begin_object();
  identity(json, id, index);
  json.key("labels").begin_object();
  for (std::size_t c = 0; id.labels != nullptr && c < id.label_names.size(); ++c)
    json.key(id.label_names[c]).value((*id.labels)[c]);
  json.end_object();
  json.key("harvests").value(std::uint64_t{model.harvests.size()});
  json.key("line").value(harvest.line);
  json.key("standard_error").value(model.has_stderr);
  press(json, model, facts);
  records(json, facts);
  json.key("failures").value(std::uint64_t{harvest.failures.size()});
  json.key("cut");
  optional_value(json, harvest.cut.empty() ? std::nullopt : std::optional(harvest.cut));
  json.key("damaged").value(facts.damaged);
  json.key("damage");
  write_harvest_damage(json, model, facts);
  json.key("missing");
  write_problems(json, facts.missing);
  json.key("press_notes");
  write_problems(json, facts.press ? std::span<const problem>(facts.press->notes) : std::span<const problem>());
  json.key("press_disagreements");
  write_problems(json, facts.press ? std::span<const problem>(facts.press->disagreements)
                                   : std::span<const problem>());
  json.end_object();
  out += '\n';
}

// The record's own row as `records` writes it, the capture's keys in front.
void record_rows(const capture_model& model, std::size_t index, const capture_identity& id,
                 std::uint64_t& ordinal, std::string& out) {
  std::string keys;
  json_writer json(keys);
  json.begin_members();
  identity(json, id, index);
  const std::size_t count = model.harvests[index].facts.records.size();
  bool reserved = false;
  write_record_rows(model, index, keys, ordinal, [&](std::string_view row) {
    // Room for the harvest's rows at once, by the first one's size: growing
    // would copy them all again, byte by byte.
    if (!reserved) out.reserve(out.size() + (row.size() + 1) * count * 5 / 4);
    reserved = true;
    out += row;
    out += '\n';
  });
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
  member(json, id);
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
