#pragma once

// The facts every JSON output shares, each written by one function here, so
// that a fact has one name, type and unit in the report, the summary, the
// trace's otherData and the tables: times in microseconds named "_us",
// results as integers (null for none), lines from 1, the input as named
// ("-" for standard input).

#include <optional>
#include <string_view>

#include "inspect/capture/capture_model.h"
#include "inspect/outputs/json_writer.h"
#include "quandor/layouts/record_layouts.h"

namespace inspect {

// {"line", "request", "label", "module", "check", "source", "source_line",
//  "kind", "value", "error_text", "meaning", "text"}
void write_failure(json_writer& json, const failure_line& failure);
// The same members, into an object already open.
void write_failure_members(json_writer& json, const failure_line& failure);
void write_failures(json_writer& json, const std::vector<failure_line>& failures);

// A problem row: {"kind", "severity", "where", "line", "last_line", "byte",
// "harvest", "subject", "numbers", "text", "outcome"}; the text rendered from
// the rest.
void write_problem(json_writer& json, const problem& found);
void write_problems(json_writer& json, std::span<const problem> found);
// The capture's damage that belongs to one harvest.
void write_harvest_damage(json_writer& json, const capture_model& model, const harvest_facts& facts);

// {"records", "first_us", "last_us", "span_us"}: the members, into an
// object already open.
void write_span(json_writer& json, const time_span& span);

// The clock pair and how well it explains the calendar texts:
// {"tmx_ns", "calendar_ns", "given", "one_pair", "segments": [...],
//  "unreadable_lines": [...]}, or null without a pair.
void write_clock(json_writer& json, const capture_model& model);

// The records per category, [{"category_id", "category", span...}], and
// per source, [{"source", span...}] or null where the capture does not say.
void write_categories(json_writer& json, const harvest_facts& facts);
void write_sources(json_writer& json, const harvest_facts& facts);

// A record field's value: a number, text or flag; null for none.
void write_field_value(json_writer& json, const std::optional<layouts::field_value>& value);

// "profile", "ZOL_profile", or null when unknown.
void write_source(json_writer& json, record_source source);

}  // namespace inspect
