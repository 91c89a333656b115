#include "run_kelvra.h"

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

namespace {

namespace fs = std::filesystem;

std::string read_file(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::string last_line(const fs::path& path) {
  std::ifstream stream(path);
  std::string line, last;
  while (std::getline(stream, line)) last = line;
  return last;
}

}  // namespace

kelvra_run run_kelvra(const std::vector<std::string>& args, const std::string& device) {
  char scratch_name[] = "/tmp/kelvra_test_XXXXXX";
  const fs::path scratch = mkdtemp(scratch_name);
  const std::string out = scratch / "out", err = scratch / "err", log = scratch / "log";

  // The platform's settings replace any the test itself runs with.
  std::vector<std::string> settings{"TMXSIM_LOG=" + log};
  if (!device.empty())
    settings.push_back("TMXSIM_DEVICE=" +
                       (device.front() == '/' ? device : KELVRA_TEST_DATA "/" + device));
  for (char** entry = environ; *entry != nullptr; ++entry)
    if (!std::string_view(*entry).starts_with("TMXSIM_")) settings.emplace_back(*entry);

  // KELVRA_TEST_WRAPPER, e.g. a memory checker and its options, runs the
  // tool; argv[0] is then the tool's path.
  std::vector<std::string> words;
  if (const char* wrapper = std::getenv("KELVRA_TEST_WRAPPER")) {
    std::istringstream split(wrapper);
    for (std::string word; split >> word;) words.push_back(word);
  }
  words.push_back(words.empty() ? "kelvra" : KELVRA_EXE);
  const bool wrapped = words.size() > 1;
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
  const int spawned = wrapped ? posix_spawnp(&child, argv[0], &files, nullptr, argv.data(), envp.data())
                              : posix_spawn(&child, KELVRA_EXE, &files, nullptr, argv.data(), envp.data());
  posix_spawn_file_actions_destroy(&files);
  int status = 0;
  if (spawned == 0) waitpid(child, &status, 0);

  kelvra_run run{read_file(out), read_file(err),
                 spawned == 0 && WIFEXITED(status) ? WEXITSTATUS(status) : -1,
                 last_line(log)};
  fs::remove_all(scratch);
  return run;
}
