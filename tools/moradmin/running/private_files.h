#pragma once

#include <string>

namespace mor::tool {

/// A path in a folder that belongs to this process alone, made on first use. Throws Failure when it
/// cannot be made.
[[nodiscard]] std::string privateFile(const std::string& name);
/// Takes the folder and what `privateFile` named away; may be called by a signal handler.
void removePrivateFiles() noexcept;

/// While it lives, a file that is being written goes away with the private ones. One at a time.
class UnfinishedFile {
public:
    explicit UnfinishedFile(const std::string& path);
    ~UnfinishedFile();
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;
};

/// The file that a word of the command line means as a drawing: itself, or for "-" a private one
/// that holds what came from stdin. Throws Failure.
[[nodiscard]] std::string drawingFile(const std::string& word);

/// Writes a file to stdout. Throws Failure.
void copyToOutput(const std::string& file);

}  // namespace mor::tool
