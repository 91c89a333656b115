// The one capture a single-capture subcommand reads: a bare file, or the
// one capture of an archive (or the member --member names). An archive is
// walked once to find its captures and again to read the one taken.

#include <algorithm>
#include <cstdio>

#include "inspect/commands/commands.h"

namespace inspect {
namespace {

void tell(const std::string& path, const member_problem& problem) {
  input_fault fault{path, problem.after.empty() ? "" : "after " + problem.after,
                    problem_text(problem)};
  if (!problem.member.empty()) fault.file = member_label(path, problem.member);
  std::fprintf(stderr, "%s\n", fault_line(fault).c_str());
}

bool refuse(const std::string& path, const std::string& why) {
  std::fprintf(stderr, "%s\n", fault_line({path, "", why}).c_str());
  return false;
}

}  // namespace

bool open_single(const std::string& path, const std::optional<std::string>& member,
                 const archive_limits& limits, std::span<const input_form> forms,
                 single_input& input) {
  input = {};
  input.path = path;
  input_fault fault;
  input.captures = std::make_unique<input_captures>(path, limits, forms);
  if (!input.captures->open(fault)) return refuse(fault.file, fault.fault);
  if (!input.captures->archive()) {
    if (member) return refuse(path, "not an archive: --member names a member of one");
    if (!input.captures->next(input.capture)) return refuse(path, "cannot open: out of memory");
    return true;
  }
  member_choice choice;
  if (member) {
    choice.name = member;
  } else if (!input.captures->seekable()) {
    return refuse(path, "an archive on a pipe is read once: --member names its capture");
  } else {
    // The survey: which members hold captures, and what else the archive holds.
    std::vector<std::pair<std::uint64_t, std::string>> found;
    for (found_capture capture; input.captures->next(capture);)
      found.emplace_back(capture.ordinal, capture.member.value_or(""));
    for (const member_problem& problem : input.captures->problems()) tell(path, problem);
    input.told = input.captures->problems().size();
    input.lost = input.captures->lost();
    if (found.size() != 1) {
      std::string why = found.empty() ? "no capture in the archive (" +
                                            std::to_string(input.captures->passed_over()) +
                                            " members passed over)"
                                      : std::to_string(found.size()) +
                                            " captures in the archive (--member names one):";
      for (const auto& [ordinal, name] : found) why += "\n  " + name;
      return refuse(path, why);
    }
    choice.ordinal = found.front().first;
    input.captures = std::make_unique<input_captures>(path, limits, forms);
    if (!input.captures->open(fault)) return refuse(fault.file, fault.fault);
  }
  input.captures->choose(choice);
  if (!input.captures->next(input.capture)) {
    finish_single(input, 0);
    // A member refused or passed over was told with the walk's problems.
    const auto problems = input.captures->problems();
    if (member && std::any_of(problems.begin(), problems.end(),
                              [&](const member_problem& p) { return p.member == *member; }))
      return false;
    return refuse(path, member ? "no member " + *member : "the archive changed while it was read");
  }
  return true;
}

int finish_single(single_input& input, int status) {
  if (!input.captures) return status;
  const auto problems = input.captures->problems();
  for (std::size_t p = input.told; p < problems.size(); ++p)
    tell(input.path, problems[p]);
  input.told = problems.size();
  if (input.captures->refused()) return 2;
  if (status == 0 && (input.lost || input.captures->lost())) return 1;
  return status;
}

}  // namespace inspect
