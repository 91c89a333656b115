// The comparison as one JSON object for tools (inspect/schema/
// compare.schema.json): every part under its key with its status, the
// values of A and B side by side, null where one has none.

#include "inspect/outputs/compare_printer.h"
#include "inspect/outputs/json_facts.h"
#include "inspect/outputs/json_tree.h"
#include "inspect/outputs/json_writer.h"

namespace inspect {
namespace {

void side(json_writer& json, const compare_side& s) {
  const capture_model& model = *s.model;
  json.begin_object();
  json.key("input").value(model.input);
  json.key("harvest").value(std::uint64_t{s.harvest + 1});
  json.key("harvests").value(std::uint64_t{model.harvests.size()});
  json.key("damaged").value(model.lost);
  json.key("damage");
  write_problems(json, model.damage);
  json.end_object();
}

class json_printer final : public compare_printer {
 public:
  explicit json_printer(std::string& out) : json_(out, true) {}

  void heading(const comparison& c) override {
    json_.begin_object();
    json_.key("schema_version").value(std::uint64_t{compare_schema_version});
    json_.key("a");
    side(json_, c.a);
    json_.key("b");
    side(json_, c.b);
    json_.key("tolerance_us").value(c.options.tolerance_us);
    json_.key("ignored_parts").begin_array();
    for (const compare_part part : c.options.ignore)
      json_.value(compare_parts[static_cast<std::size_t>(part)].key);
    json_.end_array();
    json_.key("parts").begin_object();
  }

  void begin_part(const compare_part_row& part, part_status status) override {
    json_.key(part.key).begin_object();
    json_.key("status").value(status_key(status));
  }
  void end_part() override { json_.end_object(); }
  void value(std::string_view key, const compare_cell& cell) override {
    write_json_tree(json_.key(key), cell.json);
  }
  void note(std::string_view) override {}
  void header(std::string_view) override {}
  void pair(std::string_view, std::string_view key_a, const compare_cell& a, std::string_view key_b,
            const compare_cell& b, std::string_view) override {
    value(key_a, a);
    value(key_b, b);
  }

  void table(std::string_view key, std::span<const compare_column> columns, const compare_rows& rows,
             bool) override {
    json_.key(key).begin_array();
    for (const std::vector<compare_cell>& cells : rows) {
      json_.begin_object();
      for (std::size_t i = 0; i < columns.size() && i < cells.size(); ++i)
        if (!columns[i].key.empty()) value(columns[i].key, cells[i]);
      json_.end_object();
    }
    json_.end_array();
  }

  void sides(std::span<const compare_side_row> rows) override {
    for (const bool a : {true, false}) {
      json_.key(a ? "a" : "b").begin_object();
      for (const compare_side_row& r : rows) json_.key(r.key).value(a ? r.a : r.b);
      json_.end_object();
    }
  }

  void failures(const failure_comparison& f) override {
    for (const auto& [key, list] :
         {std::pair{"only_a", &f.only_a}, std::pair{"only_b", &f.only_b}}) {
      json_.key(key).begin_array();
      for (const failure_line* line : *list) write_failure(json_, *line);
      json_.end_array();
    }
    json_.key("both").begin_array();
    for (const auto& [a, b] : f.both) {
      json_.begin_object();
      json_.key("a");
      write_failure(json_, *a);
      json_.key("b");
      write_failure(json_, *b);
      json_.end_object();
    }
    json_.end_array();
  }

  void finish(const comparison& c) override {
    json_.end_object();
    json_.key("differing_parts").begin_array();
    for (const compare_part_row& row : compare_parts)
      if (c.status_of(row.part) == part_status::differs) json_.value(row.key);
    json_.end_array();
    json_.key("agree").value(c.agree());
    json_.end_object();
    json_.text() += '\n';
  }

 private:
  json_writer json_;
};

}  // namespace

std::unique_ptr<compare_printer> json_compare_printer(std::string& out) {
  return std::make_unique<json_printer>(out);
}

}  // namespace inspect
