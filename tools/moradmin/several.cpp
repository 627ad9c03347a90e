#include "tools/moradmin/several.h"

#include "host/host.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <vector>

namespace mor::tool {

int moreSerious(int a, int b) {
    static constexpr std::array<int, 8> order = {kInterrupted, kUsage,   kUnwritable, kUnreadable,
                                                 kDamaged,     kRefused, kNo,         kDone};
    return std::ranges::find(order, a) < std::ranges::find(order, b) ? a : b;
}

int overDrawings(const Options& options, const std::function<int(const std::string&)>& visit) {
    int code = kDone;
    std::vector<std::string> files = {options.drawing};
    files.insert(files.end(), options.arguments.begin(), options.arguments.end());
    for (const std::string& file : files) {
        try {
            if (file.empty()) throw Failure(kUsage, "the name of a drawing is wanted");
            code = moreSerious(code, visit(file));
            refuseLostReadings();
        } catch (const host::ReadFailure& failure) {
            static_cast<void>(host::takeReadFailure());
            std::cout.flush();
            printFailure(options, Failure(failure.error()));
            code = moreSerious(code, kUnreadable);
        } catch (const Failure& failure) {
            std::cout.flush();
            printFailure(options, failure);
            code = moreSerious(code, failure.code());
        }
    }
    return code;
}

}  // namespace mor::tool
