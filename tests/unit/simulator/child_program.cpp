#include "unit/simulator/child_program.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <utility>

#include "base/pipe.h"
#include "base/program.h"

namespace kaz::sim::test {

ChildProgram::ChildProgram(const std::vector<std::string>& command) {
    Pipe pipe;
    process_ = startProgram({.command = command, .output = pipe.writing.get()});
    output_ = std::move(pipe.reading);
}

ChildProgram::~ChildProgram() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
}

std::string ChildProgram::readLine() const {
    std::string line;
    for (char c = 0; ::read(output_.get(), &c, 1) == 1 && c != '\n';) {
        line += c;
    }
    return line;
}

std::string ChildProgram::readAll() const {
    std::string all;
    for (char c = 0; ::read(output_.get(), &c, 1) == 1;) {
        all += c;
    }
    return all;
}

void ChildProgram::signal(int number) const {
    ::kill(process_, number);
}

int ChildProgram::wait() {
    int status = 0;
    ::waitpid(process_, &status, 0);
    process_ = -1;
    return exitStatus(status);
}

}  // namespace kaz::sim::test
