#pragma once

#include "host/result.h"
#include "platform/documents.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// Documents of the embedded drawing database: opening, saving, what is current.
namespace mor::host {

enum class Release { R2_5, R2_6, R9, R10, R12, R13, R14, R2000, R2004, R2007, R2010, R2013, R2018 };
/// A drawing holds extended data, and so values, from this release on.
inline constexpr Release kFirstWithValues = Release::R12;
/// "R2.5" to "R2018", and back without regard to case.
[[nodiscard]] std::string releaseName(Release release);
[[nodiscard]] std::optional<Release> releaseOfName(std::string_view name);

/// A new document holding the smallest valid drawing of that release; unnamed, unsaved, neither
/// current nor active. `lineEnd` is "\n" or "\r\n".
[[nodiscard]] AcApDocument* createDocument(Release release, std::string_view lineEnd = "\n");

/// Opens a drawing; the document is neither current nor active.
/// One that breaks off or is garbled is read as far as it goes, and then cannot be saved over.
/// Errors: no such file, no drawing, a form or release that is not read.
/// `Salvaged`: one that is damaged becomes what can be read of it, in memory, with what is open
/// closed; it can then be saved under another name.
enum class Opening { AsItIs, Salvaged };
Result<AcApDocument*> openDocument(const std::filesystem::path& path,
                                   Opening opening = Opening::AsItIs);

/// Releases the document. It must not be locked; when it is current or active there is none
/// afterwards. Sends no messages: make it current and send message 3 before.
void closeDocument(AcApDocument* document);

/// Sets the document in whose context calls run, the active window's document; null for none.
void setCurrentDocument(AcApDocument* document);
void setActiveDocument(AcApDocument* document);
[[nodiscard]] std::size_t documentCount();

/// Why a drawing could only be read up to a place, or but for some places.
struct Damage {
    std::string text;
    std::uint64_t line = 0;    ///< from 1; 0 where there are no lines
    std::uint64_t offset = 0;  ///< in bytes
    std::size_t places = 0;    ///< how many cannot be read when all else is, `text` is of the first
};

/// Variables of the header that say how the drawing shows; as a new drawing has them where the
/// header does not say.
struct DrawingSettings {
    double lineTypeScale = 1.0;  ///< $LTSCALE
    int pointMode = 0;           ///< $PDMODE
    double pointSize = 0.0;      ///< $PDSIZE
    bool filled = true;          ///< $FILLMODE
    int insertionUnits = 0;      ///< $INSUNITS
    // Of a DWG alone: the header of others is a record with groups.
    std::optional<std::array<std::array<double, 3>, 2>> extents;  ///< $EXTMIN and $EXTMAX
    std::optional<std::array<std::array<double, 2>, 2>> limits;   ///< $LIMMIN and $LIMMAX
};

struct DocumentInfo {
    std::filesystem::path path;  ///< empty for one that was never opened from or saved to a file
    Release release = Release::R12;
    std::string version;     ///< $ACADVER as the file has it, empty when it has none
    std::string codePage;    ///< $DWGCODEPAGE as the file has it, empty when it has none
    std::string encoding;    ///< the encoding in which its texts are read
    std::string form;        ///< "DXF", "binary DXF" or "DWG"
    std::string unwritable;  ///< why it cannot be saved, whatever is done to it; empty when it can
    std::string lineEnd;     ///< "LF", "CRLF" or "CR"; empty for a binary drawing
    std::uint64_t bytes = 0;
    /// Of a DWG: bytes among its objects that belong to none, such as older versions of objects.
    std::uint64_t deadBytes = 0;
    std::size_t records = 0;  ///< group-0 records of the file, structure included
    std::uint64_t handleSeed = 0;
    std::optional<Damage> damage;  ///< of a drawing that is read as far as it goes
    DrawingSettings settings;
};
[[nodiscard]] DocumentInfo documentInfo(const AcApDocument* document);

}  // namespace mor::host
