#pragma once

#include "host/drawing/source.h"
#include "host/dwg/sections.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// How the files of R2004, R2010 and later are laid out: pages, and sections made of them.
namespace mor::host {

inline constexpr std::uint32_t kPageMapType = 0x41630E3B;
inline constexpr std::uint32_t kSectionMapType = 0x4163003B;
inline constexpr std::size_t kDataHeaderBytes = 32;

/// A stretch of the file. Negative numbers are gaps.
struct Page {
    std::int32_t number = 0;
    std::uint64_t address = 0;
    std::uint64_t size = 0;
};

/// A page as its section knows it.
struct SectionPage {
    std::int32_t number = 0;
    std::uint32_t payload = 0;  ///< bytes behind its header
    std::uint64_t start = 0;    ///< where it belongs in the section
};

struct PagedSection {
    std::string name;
    std::uint64_t size = 0;
    std::uint32_t pageSize = 0;
    std::uint32_t unknown = 0;
    std::uint32_t number = 0;
    std::uint32_t protection = 0;
    bool packed = false;
    bool encrypted = false;
    std::vector<SectionPage> pages;  ///< what no page covers is zeros
};

struct PageLayout {
    std::string block;  ///< the leading block, unmasked
    std::int32_t pageMapNumber = 0;
    std::uint64_t pageMapAddress = 0;
    std::int32_t sectionMapNumber = 0;
    std::vector<Page> pages;  ///< in the order of the file, gaps included
    std::map<std::int32_t, std::size_t> byNumber;
    std::vector<PagedSection> sections;

    [[nodiscard]] const Page* page(std::int32_t number) const;  ///< null: there is none
    [[nodiscard]] const PagedSection* section(std::string_view name) const;
};

/// Reads both maps; answers what is wrong, empty when all is well.
[[nodiscard]] std::string readLayout(const Source& source, PageLayout& layout);
/// Reads a section into `out`, or only tests its pages when that is null; answers what is wrong
/// with its first damaged page, which is left empty.
[[nodiscard]] std::string readSection(const Source& source, const PageLayout& layout,
                                      const PagedSection& section, LargeBytes* out);
/// The page that a section has at `start`, as it lies at `address`; without what fills it up.
[[nodiscard]] std::string dataPage(std::uint32_t section, std::uint64_t start,
                                   std::string_view payload, std::uint64_t address);

}  // namespace mor::host
