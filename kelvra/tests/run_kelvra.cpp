#include "expected_output.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string_view>

extern char** environ;

std::string read_file(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

kelvra_run run_kelvra(const std::vector<std::string>& args, const std::string& phone) {
  char scratch_name[] = "/tmp/kelvra_test_XXXXXX";
  const std::filesystem::path scratch = mkdtemp(scratch_name);
  const std::string out = scratch / "out", err = scratch / "err", log = scratch / "log";
  kelvra_run run;
  run.phone = phone.starts_with('{') ? std::string(scratch / "phone.json") : phone;
  if (phone.starts_with('{')) std::ofstream(run.phone, std::ios::binary) << phone;

  // The platform's settings replace any the test itself runs with.
  std::vector<std::string> settings{"TMXSIM_LOG=" + log};
  if (!run.phone.empty()) settings.push_back("TMXSIM_DEVICE=" + run.phone);
  for (char** entry = environ; *entry != nullptr; ++entry)
    if (!std::string_view(*entry).starts_with("TMXSIM_")) settings.emplace_back(*entry);

  // KELVRA_TEST_WRAPPER, e.g. a memory checker and its options, runs the
  // tool; argv[0] is then the tool's path.
  const char* wrapper = std::getenv("KELVRA_TEST_WRAPPER");
  std::istringstream split(wrapper != nullptr ? wrapper : "");
  std::vector<std::string> words{std::istream_iterator<std::string>(split), {}};
  const std::string program = words.empty() ? KELVRA_EXE : words.front();
  words.push_back(words.empty() ? "kelvra" : KELVRA_EXE);
  words.insert(words.end(), args.begin(), args.end());
  std::vector<char*> argv, envp;
  for (std::string& word : words) argv.push_back(word.data());
  for (std::string& setting : settings) envp.push_back(setting.data());
  argv.push_back(nullptr);
  envp.push_back(nullptr);

  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_addopen(&files, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  posix_spawn_file_actions_addopen(&files, 2, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  pid_t child = 0;
  // A program named with a '/', as the tool is, is not looked up in PATH.
  const int spawned =
      posix_spawnp(&child, program.c_str(), &files, nullptr, argv.data(), envp.data());
  posix_spawn_file_actions_destroy(&files);
  int status = 0;
  if (spawned == 0) waitpid(child, &status, 0);

  run.out = read_file(out);
  run.err = read_file(err);
  run.status = spawned == 0 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  std::istringstream log_lines(read_file(log));
  for (std::string line; std::getline(log_lines, line);) run.audit = line;
  std::filesystem::remove_all(scratch);
  return run;
}
