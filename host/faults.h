#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Failures on demand, for tests. All off by default.
namespace mor::host::faults {

/// Makes every `nth` call from now on of the platform operation fail, once: 1 is the next call. The
/// operations are named as the platform spells them: "acutNewRb", "acdbEntMake", "acdbEntLast",
/// "acdbEntNext", "acdbEntDel", "acdbHandEnt", "acdbTblSearch", "acdbTblNext", "acedSSGet",
/// "acedSSLength", "acedSSName", "lockDocument", "CMOREntity::Connect", "CMOREntity::Flush",
/// "CMOREntity::Destroy", "CMOREntity::GetAttribute", "CMOREntity::SetAttribute",
/// "CMOREntity::GetAttributeText", "CMOREntity::SetAttributeText", "CMOREntity::DeleteAttribute",
/// "CMORAdsLayer::Connect", "CMORAdsLayer::Create", "CMORAdsLayer::Flush",
/// "AfxInitExtensionModule".
void failCall(std::string_view operation, std::size_t nth);
/// Makes the nth call of any of these operations fail, once.
void failAnyCall(std::size_t nth);
/// Whether a fault that was asked for has struck since the last `reset`.
[[nodiscard]] bool struck();

void refuseLocks(bool on);        ///< every document lock is refused
void refuseLayer(bool on);        ///< layers can neither be connected nor made
void refuseEntities(bool on);     ///< `acdbEntMake` refuses everything
void refuseWrites(bool on);       ///< every change of the drawing is refused and counted
void enforceLayerLocks(bool on);  ///< entities on a locked layer refuse change and erasure
void limitRoom(long bytes);       ///< room of every entity; 0: the platform's own
[[nodiscard]] std::size_t refusedWrites();

/// Ends the process (exit code 99) right before the nth system call of the next save; 0: never.
void dieAtSaveCall(std::size_t nth);
/// Makes the nth system call of the next save fail; 0: never.
void failSaveCall(std::size_t nth);
/// The names of the system calls that the last save made, in order.
[[nodiscard]] std::vector<std::string> saveCalls();

/// Makes the nth reading of a drawing's file from now on fail, once; 0: never.
void failRead(std::size_t nth);

/// Text drawings are read a line at a time instead of many: slower, and meant to find the same.
void readLineByLine(bool on);

/// Checksums of DWG files are taken to be right, so that tests reach what lies behind them.
void trustSums(bool on);

void reset();

// What the host asks at each operation.
[[nodiscard]] bool shouldFail(std::string_view operation);
[[nodiscard]] bool locksRefused();
[[nodiscard]] bool layerRefused();
[[nodiscard]] bool entitiesRefused();
[[nodiscard]] bool writesRefused();  ///< counts a refusal when on
[[nodiscard]] bool layerLocksEnforced();
[[nodiscard]] long roomLimit();
[[nodiscard]] bool readFails();
[[nodiscard]] bool readsLineByLine();
[[nodiscard]] bool trustsSums();
void saveBegins();  ///< from here on `saveCalls` lists a new save
enum class SaveCall { Go, Fail };
[[nodiscard]] SaveCall beforeSaveCall(std::string_view name);

}  // namespace mor::host::faults
