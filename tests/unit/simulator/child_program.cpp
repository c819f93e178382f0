#include "unit/simulator/child_program.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

namespace kaz::sim::test {

ChildProgram::ChildProgram(const std::vector<std::string>& command) {
    auto words = command;
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("pipe2");
    }
    process_ = ::fork();
    if (process_ == 0) {
        ::dup2(pipe[1], STDOUT_FILENO);
        ::execvp(arguments.front(), arguments.data());
        ::_exit(127);
    }
    ::close(pipe[1]);
    output_ = pipe[0];
}

ChildProgram::~ChildProgram() {
    ::close(output_);
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
}

std::string ChildProgram::readLine() const {
    std::string line;
    for (char c = 0; ::read(output_, &c, 1) == 1 && c != '\n';) {
        line += c;
    }
    return line;
}

std::string ChildProgram::readAll() const {
    std::string all;
    for (char c = 0; ::read(output_, &c, 1) == 1;) {
        all += c;
    }
    return all;
}

void ChildProgram::signal(int number) const {
    ::kill(process_, number);
}

int ChildProgram::wait() {
    constexpr int signalBase = 128;
    int status = 0;
    ::waitpid(process_, &status, 0);
    process_ = -1;
    return WIFSIGNALED(status) ? signalBase + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace kaz::sim::test
