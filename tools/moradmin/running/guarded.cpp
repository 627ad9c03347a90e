#include "tools/moradmin/running/guarded.h"

#include "host/host.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/session.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <new>

namespace mor::tool {

int moreSerious(int a, int b) {
    static constexpr std::array<int, 8> order = {kInterrupted, kUsage,   kUnwritable, kUnreadable,
                                                 kDamaged,     kRefused, kNo,         kDone};
    return std::ranges::find(order, a) < std::ranges::find(order, b) ? a : b;
}

void flushOutput() {
    std::cout.flush();
    if (!std::cout) throw Failure(kUnwritable, "the output cannot be written");
}

int guarded(const Options& options, const std::function<int()>& run) {
    sayAs(options);
    try {
        const int code = run();
        refuseLostReadings();
        flushOutput();
        return takeSawDamage() ? moreSerious(code, kDamaged) : code;
    } catch (const Failure& failure) {
        std::cout.flush();
        const auto lost = host::takeReadFailure();  // the reason behind it, then
        // What a damaged drawing does not show may have stood behind the damage.
        const int code = takeSawDamage() ? moreSerious(failure.code(), kDamaged) : failure.code();
        printFailure(options,
                     lost ? Failure(*lost)
                          : Failure(static_cast<ExitCode>(code), failure.what(), failure.path()));
        return lost ? static_cast<int>(kUnreadable) : code;
    } catch (const host::ReadFailure& failure) {
        static_cast<void>(host::takeReadFailure());
        std::cout.flush();
        printFailure(options, Failure(failure.error()));
        return kUnreadable;
    } catch (const std::bad_alloc&) {
        printFailure(options,
                     Failure(kUnreadable, "there is not enough memory for this", options.drawing));
        return kUnreadable;
    } catch (const std::exception& error) {
        printFailure(options, Failure(kUnreadable, error.what(), options.drawing));
        return kUnreadable;
    }
}

}  // namespace mor::tool
