#include "host/faults.h"

#include "host/permanent.h"

#include <atomic>
#include <cstdlib>
#include <functional>
#include <map>

namespace mor::host::faults {

namespace {

constexpr int kDeathExitCode = 99;

struct State {
    std::map<std::string, std::size_t, std::less<>> calls;  // operation: calls left until it fails
    std::size_t anyCall = 0;                                // the same for all together; 0: none
    bool struck = false;

    bool refuseLocks = false;
    bool refuseLayer = false;
    bool refuseEntities = false;
    bool refuseWrites = false;
    bool enforceLayerLocks = false;
    long roomLimit = 0;
    std::size_t refusedWrites = 0;

    std::size_t dieAt = 0;
    std::size_t failAt = 0;
    bool lineByLine = false;
    bool sumsTrusted = false;
    std::vector<std::string> saveCalls;
};

State& state() {
    static Permanent<State> s_state;
    return *s_state;
}

/// More than one thread may read.
std::atomic<std::size_t>& failReadAt() {
    static Permanent<std::atomic<std::size_t>> s_at;
    return *s_at;
}

// Counts down to the call that fails; 0 stays 0.
bool isDue(std::size_t& callsLeft) { return callsLeft != 0 && --callsLeft == 0; }

}  // namespace

void failCall(std::string_view operation, std::size_t nth) {
    state().calls.insert_or_assign(std::string{operation}, nth);
}
void failAnyCall(std::size_t nth) { state().anyCall = nth; }
bool struck() { return state().struck; }

void refuseLocks(bool on) { state().refuseLocks = on; }
void refuseLayer(bool on) { state().refuseLayer = on; }
void refuseEntities(bool on) { state().refuseEntities = on; }
void refuseWrites(bool on) { state().refuseWrites = on; }
void enforceLayerLocks(bool on) { state().enforceLayerLocks = on; }
void limitRoom(long bytes) { state().roomLimit = bytes; }
std::size_t refusedWrites() { return state().refusedWrites; }

void dieAtSaveCall(std::size_t nth) { state().dieAt = nth; }
void failSaveCall(std::size_t nth) { state().failAt = nth; }
std::vector<std::string> saveCalls() { return state().saveCalls; }

void failRead(std::size_t nth) { failReadAt() = nth; }
void readLineByLine(bool on) { state().lineByLine = on; }
bool readsLineByLine() { return state().lineByLine; }
void trustSums(bool on) { state().sumsTrusted = on; }
bool trustsSums() { return state().sumsTrusted; }

void reset() {
    state() = {};
    failReadAt() = 0;
}

bool shouldFail(std::string_view operation) {
    if (state().anyCall == 0 && state().calls.empty()) return false;
    bool due = isDue(state().anyCall);
    if (const auto found = state().calls.find(operation); found != state().calls.end())
        due = isDue(found->second) || due;
    state().struck = state().struck || due;
    return due;
}

bool locksRefused() { return state().refuseLocks; }
bool layerRefused() { return state().refuseLayer; }
bool entitiesRefused() { return state().refuseEntities; }
bool writesRefused() {
    if (state().refuseWrites) ++state().refusedWrites;
    return state().refuseWrites;
}
bool layerLocksEnforced() { return state().enforceLayerLocks; }
long roomLimit() { return state().roomLimit; }

bool readFails() {
    std::size_t left = failReadAt();
    while (left != 0 && !failReadAt().compare_exchange_weak(left, left - 1)) {
    }
    if (left != 1) return false;
    state().struck = true;
    return true;
}

void saveBegins() { state().saveCalls.clear(); }

SaveCall beforeSaveCall(std::string_view name) {
    if (isDue(state().dieAt)) std::_Exit(kDeathExitCode);
    state().saveCalls.emplace_back(name);
    if (!isDue(state().failAt)) return SaveCall::Go;
    state().struck = true;
    return SaveCall::Fail;
}

}  // namespace mor::host::faults
