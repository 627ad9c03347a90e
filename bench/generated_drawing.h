#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace mor::bench {

/// An R12 drawing of that many lines on layers WALLS0, WALLS1 and so on, ten lines of one layer at
/// a time, in the folder for temporary files while it lives.
class GeneratedDrawing {
public:
    explicit GeneratedDrawing(std::size_t lines, std::size_t layers = 40)
        : m_path(
              std::filesystem::temp_directory_path() /
              ("mor_bench_" + std::to_string(::getpid()) + "_" + std::to_string(lines) + ".dxf")) {
        std::ofstream file(m_path, std::ios::binary);
        file << "0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\nAC1009\n0\nENDSEC\n"
                "0\nSECTION\n2\nENTITIES\n";
        for (std::size_t i = 0; i < lines; ++i)
            file << "  0\nLINE\n  5\n"
                 << std::hex << i + 0x100 << std::dec << "\n  8\nWALLS" << i / 10 % layers
                 << "\n 10\n"
                 << static_cast<double>(i) * 0.37 << "\n 20\n"
                 << static_cast<double>(i % 997) * 1.25 << "\n 30\n0.0\n 11\n"
                 << static_cast<double>(i) * 0.41 << "\n 21\n12.5\n 31\n0.0\n";
        file << "  0\nENDSEC\n  0\nEOF\n";
        file.close();
        m_bytes = std::filesystem::file_size(m_path);
    }
    ~GeneratedDrawing() {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    GeneratedDrawing(const GeneratedDrawing&) = delete;
    GeneratedDrawing& operator=(const GeneratedDrawing&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }
    [[nodiscard]] std::uintmax_t bytes() const { return m_bytes; }

private:
    std::filesystem::path m_path;
    std::uintmax_t m_bytes = 0;
};

}  // namespace mor::bench
