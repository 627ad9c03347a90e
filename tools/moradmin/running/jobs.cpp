#include "tools/moradmin/running/jobs.h"

#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/running/several.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <deque>
#include <iostream>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace mor::tool {

namespace {

/// At most so many are begun and not yet printed.
constexpr std::size_t kMostBegun = 128;

/// Those that run, for signal handlers; 0 is none.
std::array<volatile pid_t, kMostBegun> s_running{};

/// One visit in a process of its own, with files in memory that catch what it prints.
struct Job {
    pid_t process = 0;
    int out = -1;
    int err = -1;
    int code = kUnreadable;
    bool ended = false;
};

void copyTo(int from, std::ostream& to) {
    std::array<char, 65536> bytes{};
    ::lseek(from, 0, SEEK_SET);
    for (ssize_t got = 0; (got = ::read(from, bytes.data(), bytes.size())) > 0;)
        to.write(bytes.data(), got);
    ::close(from);
}

Job begin(std::size_t number, const std::function<int(std::size_t)>& visit) {
    Job job;
    job.out = ::memfd_create("out", MFD_CLOEXEC);
    job.err = ::memfd_create("err", MFD_CLOEXEC);
    job.process = job.out < 0 || job.err < 0 ? -1 : ::fork();
    if (job.process < 0) throw Failure(kUnreadable, "no process can be begun; --jobs 1 needs none");
    if (job.process != 0) return job;
    Progress::leave();
    for (volatile pid_t& running : s_running) running = 0;  // they are not this one's
    ::dup2(job.out, STDOUT_FILENO);
    ::dup2(job.err, STDERR_FILENO);
    lookAtOutputAgain();
    const int code = visit(number);
    std::cout.flush();
    std::cerr.flush();
    ::_exit(code);
}

void noteRunning(pid_t process, pid_t before) {
    for (volatile pid_t& running : s_running)
        if (running == before) {
            running = process;
            return;
        }
}

/// Waits until one of the jobs ends.
void reap(std::deque<Job>& jobs) {
    int status = 0;
    const pid_t ended = ::waitpid(-1, &status, 0);
    if (ended < 0) {
        if (errno != EINTR) throw Failure(kUnreadable, "a process is lost");
        return;
    }
    for (Job& job : jobs)
        if (job.process == ended) {
            noteRunning(0, ended);
            job.ended = true;
            if (WIFEXITED(status)) job.code = WEXITSTATUS(status);
        }
}

}  // namespace

void endVisits() noexcept {
    for (const volatile pid_t& running : s_running)
        if (const pid_t process = running; process > 0) ::kill(process, SIGTERM);
}

void visitAtOnce(std::size_t count, int most, Progress& progress,
                 const std::function<int(std::size_t)>& visit,
                 const std::function<void(int)>& done) {
    std::deque<Job> jobs;
    std::size_t next = 0;
    int running = 0;
    std::cout.flush();
    std::cerr.flush();
    while (next < count || !jobs.empty()) {
        while (next < count && running < most && jobs.size() < kMostBegun) {
            jobs.push_back(begin(next++, visit));
            noteRunning(jobs.back().process, 0);
            ++running;
        }
        reap(jobs);
        running = 0;
        for (const Job& job : jobs) running += job.ended ? 0 : 1;
        while (!jobs.empty() && jobs.front().ended) {
            progress.begin(next - jobs.size());
            copyTo(jobs.front().out, std::cout);
            std::cout.flush();
            copyTo(jobs.front().err, std::cerr);
            done(jobs.front().code);
            jobs.pop_front();
        }
    }
}

}  // namespace mor::tool
