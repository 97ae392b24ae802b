#include "process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <stdexcept>

extern char** environ;

namespace zorvat::testing_support {

ProcessResult run_process(const std::vector<std::string>& argv,
                          const std::optional<std::string>& input) {
  int out_pipe[2], err_pipe[2], in_pipe[2] = {-1, -1};
  if (pipe(out_pipe) != 0 || pipe(err_pipe) != 0) throw std::runtime_error("pipe failed");
  if (input && pipe(in_pipe) != 0) throw std::runtime_error("pipe failed");
  if (input) fcntl(in_pipe[1], F_SETFL, O_NONBLOCK);  // write what fits, then read again
  // A program that stops reading early closes the pipe: the write fails, no signal.
  std::signal(SIGPIPE, SIG_IGN);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  if (input) {
    posix_spawn_file_actions_adddup2(&actions, in_pipe[0], 0);
    posix_spawn_file_actions_addclose(&actions, in_pipe[1]);
  } else {
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  }
  posix_spawn_file_actions_adddup2(&actions, out_pipe[1], 1);
  posix_spawn_file_actions_adddup2(&actions, err_pipe[1], 2);
  posix_spawn_file_actions_addclose(&actions, out_pipe[0]);
  posix_spawn_file_actions_addclose(&actions, err_pipe[0]);
  std::vector<char*> args;
  args.reserve(argv.size() + 1);
  for (const auto& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
  args.push_back(nullptr);
  pid_t pid = 0;
  const int spawned = posix_spawn(&pid, args[0], &actions, nullptr, args.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(out_pipe[1]);
  close(err_pipe[1]);
  if (input) close(in_pipe[0]);
  if (spawned != 0) {
    close(out_pipe[0]);
    close(err_pipe[0]);
    if (input) close(in_pipe[1]);
    throw std::runtime_error("cannot start " + argv[0]);
  }
  ProcessResult result;
  // The input is written as the program reads it, between its output, so that neither
  // side waits on a full pipe.
  std::size_t written = 0;
  pollfd fds[3] = {{out_pipe[0], POLLIN, 0}, {err_pipe[0], POLLIN, 0}, {in_pipe[1], POLLOUT, 0}};
  if (input && input->empty()) {
    close(in_pipe[1]);
    fds[2].fd = -1;
  }
  std::string* sinks[2] = {&result.out, &result.err};
  int open_count = 2;
  char buffer[65536];
  while (open_count > 0) {
    if (poll(fds, 3, -1) < 0) break;
    if (fds[2].fd >= 0 && (fds[2].revents & (POLLOUT | POLLERR | POLLHUP))) {
      const ssize_t n = write(fds[2].fd, input->data() + written, input->size() - written);
      if (n > 0) written += static_cast<std::size_t>(n);
      if ((n < 0 && errno != EAGAIN) || written == input->size()) {
        close(fds[2].fd);
        fds[2].fd = -1;
      }
    }
    for (int i = 0; i < 2; ++i) {
      if (fds[i].fd < 0 || !(fds[i].revents & (POLLIN | POLLHUP))) continue;
      const ssize_t n = read(fds[i].fd, buffer, sizeof buffer);
      if (n > 0) {
        sinks[i]->append(buffer, static_cast<std::size_t>(n));
      } else {
        close(fds[i].fd);
        fds[i].fd = -1;
        --open_count;
      }
    }
  }
  if (fds[2].fd >= 0) close(fds[2].fd);
  int status = 0;
  waitpid(pid, &status, 0);
  result.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

}  // namespace zorvat::testing_support
