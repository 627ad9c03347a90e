#include "tools/moradmin/running/apart.h"

#include "tools/moradmin/failure.h"

#include <cerrno>
#include <csignal>
#include <iostream>
#include <sys/wait.h>
#include <unistd.h>

namespace mor::tool {

int runApart(void (*onInterrupt)(int), const std::function<int()>& run) {
    std::cout.flush();
    std::cerr.flush();
    const pid_t process = ::fork();
    if (process < 0) throw Failure(kUnreadable, "no process can be begun for this command");
    if (process == 0) {
        std::signal(SIGINT, onInterrupt);
        const int code = run();
        std::cout.flush();
        std::cerr.flush();
        ::_exit(code);
    }
    int status = 0;
    while (::waitpid(process, &status, 0) < 0)
        if (errno != EINTR) throw Failure(kUnreadable, "the process of this command is lost");
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : static_cast<int>(kInterrupted);
    if (code == kInterrupted) std::cerr << "\n";
    return code;
}

}  // namespace mor::tool
