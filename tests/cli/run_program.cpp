#include "run_program.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace qv5::test {
namespace {

void drain(int out_fd, int err_fd, std::string& out, std::string& err) {
    pollfd fds[2] = {{out_fd, POLLIN, 0}, {err_fd, POLLIN, 0}};
    int open_count = 2;
    char buffer[4096];
    while (open_count > 0) {
        if (poll(fds, 2, -1) < 0) {
            return;
        }
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || (fds[i].revents & (POLLIN | POLLHUP)) == 0) {
                continue;
            }
            const ssize_t n = read(fds[i].fd, buffer, sizeof buffer);
            if (n <= 0) {
                close(fds[i].fd);
                fds[i].fd = -1;
                --open_count;
            } else {
                (i == 0 ? out : err).append(buffer, static_cast<std::size_t>(n));
            }
        }
    }
}

} // namespace

ProgramResult run_program(const std::string& program, const std::vector<std::string>& args,
                          const std::vector<std::string>& environment, const std::string& input) {
    ProgramResult result;
    int in_pipe[2];
    int out_pipe[2];
    int err_pipe[2];
    if (pipe(in_pipe) != 0 || pipe(out_pipe) != 0 || pipe(err_pipe) != 0) {
        return result;
    }
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(program.c_str()));
    for (const std::string& a : args) {
        argv.push_back(const_cast<char*>(a.c_str()));
    }
    argv.push_back(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(in_pipe[0], STDIN_FILENO);
        close(in_pipe[0]);
        close(in_pipe[1]);
        dup2(out_pipe[1], STDOUT_FILENO);
        dup2(err_pipe[1], STDERR_FILENO);
        close(out_pipe[0]);
        close(err_pipe[0]);
        close(out_pipe[1]);
        close(err_pipe[1]);
        for (const std::string& entry : environment) {
            putenv(const_cast<char*>(entry.c_str()));
        }
        execv(program.c_str(), argv.data());
        _exit(127);
    }
    close(in_pipe[0]);
    // A program that exits without reading its input must not take the tests down with it.
    std::signal(SIGPIPE, SIG_IGN);
    // The inputs of the tests are small: they fit in the pipe before the program reads them.
    for (std::size_t written = 0; written < input.size();) {
        const ssize_t n = write(in_pipe[1], input.data() + written, input.size() - written);
        if (n <= 0) {
            break;
        }
        written += static_cast<std::size_t>(n);
    }
    close(in_pipe[1]);
    close(out_pipe[1]);
    close(err_pipe[1]);
    drain(out_pipe[0], err_pipe[0], result.out, result.err);
    int status = 0;
    waitpid(pid, &status, 0);
    result.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

} // namespace qv5::test
