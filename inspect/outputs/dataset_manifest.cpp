#include "inspect/outputs/dataset_manifest.h"

#include "inspect/outputs/json_writer.h"
#include "liblog_zol/json_printer.h"

namespace inspect {

// harvests, failures and unreadable rows are this program's own; records'
// rows are the records subcommand's, with the capture's keys in front.
constexpr int table_schema_version = 1;

const std::array<table_kind, 4> dataset_tables = {{
    {"harvests", "harvests.schema.json", table_schema_version},
    {"records", "records_table.schema.json", zol::records_schema_version},
    {"failures", "failures.schema.json", table_schema_version},
    {"unreadable", "unreadable.schema.json", table_schema_version},
}};

input_counts& input_counts::operator+=(const input_counts& other) {
  listed += other.listed;
  read_whole += other.read_whole;
  damaged += other.damaged;
  unreadable += other.unreadable;
  members_passed_over += other.members_passed_over;
  not_read += other.not_read;
  return *this;
}

std::string manifest_json(const dataset_manifest& manifest) {
  std::string out;
  json_writer json(out, true);
  json.begin_object();
  json.key("schema_version").value(std::uint64_t{manifest_schema_version});
  json.key("tool").value(manifest.tool);
  json.key("version").value(manifest.version);
  json.key("complete").value(manifest.inputs.not_read == 0);
  const input_counts& in = manifest.inputs;
  json.key("inputs").begin_object();
  for (const auto& [key, count] : {std::pair{"listed", in.listed}, std::pair{"read_whole", in.read_whole},
                                   std::pair{"damaged", in.damaged}, std::pair{"unreadable", in.unreadable},
                                   std::pair{"members_passed_over", in.members_passed_over},
                                   std::pair{"not_read", in.not_read}})
    json.key(key).value(count);
  json.end_object();
  json.key("partition_by");
  if (manifest.partition_by.empty())
    json.null();
  else
    json.value(manifest.partition_by);
  json.key("tables").begin_object();
  for (std::size_t t = 0; t < dataset_tables.size(); ++t) {
    const table_kind& kind = dataset_tables[t];
    std::uint64_t rows = 0;
    for (const table_file_facts& file : manifest.files)
      if (file.table == t) rows += file.rows;
    json.key(kind.name).begin_object();
    json.key("schema").value(kind.schema);
    json.key("schema_version").value(std::uint64_t(kind.version));
    json.key("rows").value(rows);
    json.key("files").begin_array();
    for (const table_file_facts& file : manifest.files) {
      if (file.table != t) continue;
      json.begin_object();
      json.key("path").value(file.path);
      json.key("rows").value(file.rows);
      json.key("bytes").value(file.bytes);
      json.key("sha256").value(file.sha256);
      json.end_object();
    }
    json.end_array();
    json.end_object();
  }
  json.end_object();
  json.end_object();
  out += '\n';
  return out;
}

}  // namespace inspect
