#include "inspect/outputs/report_writer.h"

#include <map>
#include <variant>

#include "inspect/capture/number_text.h"
#include "inspect/capture/press_stats.h"
#include "inspect/outputs/json_facts.h"
#include "inspect/outputs/json_writer.h"
#include "quandor/layouts/record_layouts.h"

namespace inspect {
namespace {

// Named fields as members of the object open; the elements of an array
// field gather in order.
void field_members(json_writer& json, const std::vector<layouts::named_field>& list) {
  for (std::size_t i = 0; i < list.size();) {
    json.key(list[i].name);
    if (!list[i].index) {
      write_field_value(json, list[i++].value);
      continue;
    }
    json.begin_array();
    const std::string_view name = list[i].name;
    for (; i < list.size() && list[i].name == name && list[i].index; ++i)
      write_field_value(json, list[i].value);
    json.end_array();
  }
}

void fields(json_writer& json, const std::vector<layouts::named_field>& list) {
  json.begin_object();
  field_members(json, list);
  json.end_object();
}

// Table entries: one object an index.
void entries(json_writer& json, const std::vector<layouts::named_field>& list) {
  std::map<std::size_t, std::vector<const layouts::named_field*>> by_index;
  for (const layouts::named_field& field : list) by_index[field.index.value_or(0)].push_back(&field);
  json.begin_array();
  for (const auto& [index, members] : by_index) {
    json.begin_object();
    json.key("entry").value(std::uint64_t{index});
    for (const layouts::named_field* field : members) {
      json.key(field->name);
      write_field_value(json, field->value);
    }
    json.end_object();
  }
  json.end_array();
}

// The record's per-edge fields, by role, and each click's keys for them.
struct edge_keys {
  layouts::field_role role;
  std::string_view down;
  std::string_view up;
};
constexpr edge_keys click_edges[] = {
    {layouts::field_role::button_edge, "button_down", "button_up"},
    {layouts::field_role::asset_edge, "button_down_play_asset", "button_up_play_asset"},
    {layouts::field_role::asset_latency, "button_down_to_play_asset", "button_up_to_play_asset"},
};

bool edge_field(const layouts::named_field& field) {
  for (const edge_keys& edge : click_edges)
    if (field.role == edge.role) return true;
  return false;
}

// Each click's edges side by side, one object a click the record holds.
void clicks(json_writer& json, const std::vector<layouts::named_field>& list) {
  json.key("clicks").begin_array();
  for (std::size_t click = 0; click < clicks_in_record; ++click) {
    json.begin_object();
    json.key("click").value(std::uint64_t{click + 1});
    for (const edge_keys& edge : click_edges)
      for (const layouts::named_field& field : list)
        if (field.role == edge.role && field.index && *field.index / 2 == click) {
          json.key(*field.index % 2 == 0 ? edge.down : edge.up);
          write_field_value(json, field.value);
        }
    json.end_object();
  }
  json.end_array();
}

void statistics(json_writer& json, const std::optional<stats_block>& stats) {
  if (!stats) {
    json.null();
    return;
  }
  json.begin_object();
  json.key("line").value(stats->line);
  json.key("printed").value(stats->printed);
  json.key("damaged").value(stats->damaged);
  if (stats->printed) {
    std::vector<layouts::named_field> list = layouts::stats_fields(stats->record);
    clicks(json, list);
    // The edges stand in the clicks alone.
    std::erase_if(list, edge_field);
    field_members(json, list);
  }
  json.end_object();
}

void state_dumps(json_writer& json, const std::vector<state_dump>& dumps) {
  json.begin_array();
  for (const state_dump& dump : dumps) {
    json.begin_object();
    json.key("request").value(layouts::request_row(dump.about).report_key);
    json.key("line").value(dump.line);
    json.key("damaged").value(dump.damaged);
    json.key("fields");
    if (!dump.record)
      json.null();
    else
      fields(json, layouts::state_dump_fields(layouts::request_row(dump.about).service, *dump.record));
    json.end_object();
  }
  json.end_array();
}

void profile(json_writer& json, const harvest_model& harvest) {
  const harvest_facts& facts = harvest.facts;
  json.begin_object();
  json.key("records").value(std::uint64_t{harvest.profile.size()});
  json.key("first_line");
  if (harvest.profile.empty())
    json.null();
  else
    json.value(harvest.profile.front().line);
  json.key("last_line");
  if (harvest.profile.empty())
    json.null();
  else
    json.value(harvest.profile.back().line);
  json.key("by_source");
  write_sources(json, facts);
  json.key("by_category");
  write_categories(json, facts);
  json.end_object();
}

void assets(json_writer& json, const std::optional<assets_block>& block) {
  if (!block) {
    json.null();
    return;
  }
  json.begin_object();
  json.key("line").value(block->line);
  json.key("length").value(block->length);
  json.key("damaged").value(block->damaged);
  json.key("entries");
  if (block->length == 0)
    json.begin_array().end_array();
  else
    entries(json, layouts::assets_fields(block->table));
  json.end_object();
}

void hid_reports(json_writer& json, const std::vector<hid_report>& reports) {
  json.begin_array();
  for (const hid_report& report : reports) {
    json.begin_object();
    json.key("id").value(std::uint64_t{report.id()});
    json.key("line").value(report.line);
    json.key("failed").value(report.failed);
    json.key("damaged").value(report.damaged);
    json.key("length").value(std::uint64_t{report.bytes.size()});
    json.key("hex").value(hex_bytes(report.bytes));
    json.end_object();
  }
  json.end_array();
}

}  // namespace

std::string write_report(const capture_model& model) {
  std::string out;
  json_writer json(out, true);
  json.begin_object();
  json.key("schema_version").value(std::uint64_t{report_schema_version});
  json.key("input").value(model.input);
  json.key("standard_error").value(model.has_stderr);
  json.key("timesync");
  write_clock(json, model);
  json.key("damaged").value(model.lost);
  json.key("damage");
  write_problems(json, model.damage);
  json.key("harvests").begin_array();
  for (const harvest_model& harvest : model.harvests) {
    json.begin_object();
    json.key("line").value(harvest.line);
    json.key("cut");
    if (harvest.cut.empty())
      json.null();
    else
      json.value(harvest.cut);
    json.key("statistics");
    statistics(json, harvest.stats);
    json.key("state_dumps");
    state_dumps(json, harvest.states);
    json.key("profile");
    profile(json, harvest);
    json.key("assets");
    assets(json, harvest.assets);
    json.key("hid_reports");
    hid_reports(json, harvest.hid);
    json.key("failures");
    write_failures(json, harvest.failures);
    json.end_object();
  }
  json.end_array();
  json.end_object();
  out += '\n';
  return out;
}

}  // namespace inspect
