#include "run_kelvra.h"

#include <IOKit/IOReturn.h>
#include <mach/mach_error.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

void drain(int (&fds)[2], std::string (&texts)[2]) {
  pollfd polls[2] = {{fds[0], POLLIN, 0}, {fds[1], POLLIN, 0}};
  int open_count = 2;
  char chunk[4096];
  while (open_count > 0 && poll(polls, 2, -1) > 0) {
    for (int i = 0; i < 2; ++i) {
      if (polls[i].fd < 0 || polls[i].revents == 0) continue;
      const ssize_t got = read(polls[i].fd, chunk, sizeof chunk);
      if (got > 0) {
        texts[i].append(chunk, static_cast<std::size_t>(got));
      } else {
        close(polls[i].fd);
        polls[i].fd = -1;
        --open_count;
      }
    }
  }
}

std::string last_line(const std::string& path) {
  std::ifstream log(path);
  std::string line, last;
  while (std::getline(log, line)) last = line;
  return last;
}

}  // namespace

kelvra_run run_kelvra(const std::vector<std::string>& args,
                      const std::string& device) {
  char log_path[] = "/tmp/kelvra_test_log_XXXXXX";
  close(mkstemp(log_path));
  int out_pipe[2], err_pipe[2];
  if (pipe(out_pipe) != 0 || pipe(err_pipe) != 0) return {};

  const pid_t child = fork();
  if (child == 0) {
    dup2(out_pipe[1], 1);
    dup2(err_pipe[1], 2);
    for (int fd : {out_pipe[0], out_pipe[1], err_pipe[0], err_pipe[1]}) close(fd);
    if (device.empty())
      unsetenv("TMXSIM_DEVICE");
    else if (device.front() == '/')
      setenv("TMXSIM_DEVICE", device.c_str(), 1);
    else
      setenv("TMXSIM_DEVICE", (std::string(KELVRA_TEST_DATA) + "/" + device).c_str(), 1);
    setenv("TMXSIM_LOG", log_path, 1);
    // KELVRA_TEST_WRAPPER, e.g. a memory checker and its options, runs the
    // tool; argv[0] is then the tool's path.
    std::vector<std::string> wrapper;
    if (const char* words = std::getenv("KELVRA_TEST_WRAPPER")) {
      std::istringstream split(words);
      for (std::string word; split >> word;) wrapper.push_back(word);
    }
    std::vector<char*> argv;
    for (std::string& word : wrapper) argv.push_back(word.data());
    argv.push_back(const_cast<char*>(wrapper.empty() ? "kelvra" : KELVRA_EXE));
    for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    if (wrapper.empty())
      execv(KELVRA_EXE, argv.data());
    else
      execvp(argv[0], argv.data());
    _exit(127);
  }
  close(out_pipe[1]);
  close(err_pipe[1]);
  int fds[2] = {out_pipe[0], err_pipe[0]};
  std::string texts[2];
  drain(fds, texts);
  int status = 0;
  waitpid(child, &status, 0);

  kelvra_run run{texts[0], texts[1], WIFEXITED(status) ? WEXITSTATUS(status) : -1,
                 last_line(log_path)};
  std::remove(log_path);
  return run;
}

std::string hex(unsigned value) {
  std::ostringstream text;
  text << std::hex << std::showbase << value;
  return text.str();
}

int count_lines(const std::string& text) {
  return static_cast<int>(std::count(text.begin(), text.end(), '\n'));
}

namespace {

std::string failure(const std::string& module_and_check, const std::string& message,
                    const std::string& source, int error) {
  std::string line = "Assertion failed: " + module_and_check + " bail " + message + source;
  if (error != 0)
    line += " " + std::string(mach_error_string(error)) + " (" +
            hex(static_cast<unsigned>(error)) + ")";
  return line + "\n";
}

}  // namespace

std::string kelvra_failure(const std::string& check, const std::string& line, int error) {
  return failure("kelvra: Check failed: " + check, "", "kelvra/kelvra:" + line, error);
}

std::string varnel_failure(const std::string& check, const std::string& line, int error,
                           bool with_message) {
  const std::string message = with_message ? std::string(mach_error_string(error)) + " " : "";
  return failure("varnel: Check failed: " + check, message, "quandor/varnel:" + line, error);
}

std::string stats_missing_first() {
  return varnel_failure("service", "2903") + kelvra_failure("kr == 0 ", "130", kIOReturnNotFound);
}
std::string states_missing() {
  return varnel_failure("service", "0xb57") + kelvra_failure("kr == 0 ", "0x94", kIOReturnNotFound);
}
std::string events_missing() {
  return varnel_failure("service", "0xb57") +
         varnel_failure("result == 0 ", "0x74f", kIOReturnNotFound);
}
std::string assets_missing() {
  return varnel_failure("service", "0xb57") + kelvra_failure("kr == 0 ", "0xbd", kIOReturnNotFound);
}
std::string hid_missing() { return kelvra_failure("service", "0xdd"); }
