#pragma once

/// The texts by which the file system is found again in a drawing, and those that it reports.
namespace mor {

// In the drawing. None of them may ever change: drawings hold them.
inline constexpr const wchar_t* kFileSystemBlock = L"MOR_DWGFILES";
inline constexpr const wchar_t* kControlLayer = L"MOR_CONTROL_LAYER";
inline constexpr const wchar_t* kDefaultLayer = L"0";
inline constexpr const wchar_t* kRootLink = L"^DWG_FILESYSTEM_ROOT";
inline constexpr const wchar_t* kIdAttribute = L"$ID";
inline constexpr const wchar_t* kDirectoryId = L"MOR_DWGFILES_DIR";
inline constexpr const wchar_t* kInfoAttribute = L"$INFO";
inline constexpr const wchar_t* kAttdefTag = L"mor";
inline constexpr const wchar_t* kAttdefPrompt = L"mor";
inline constexpr short kAttdefFlags = 3;  ///< invisible, constant: inserts show and carry nothing

inline constexpr const wchar_t* kRootPath = L"/";

// To `reportViewNotWriteable`.
inline constexpr const wchar_t* kWarningNotWriteable = L"WARNING view is not writeable";
inline constexpr const wchar_t* kErrorNotWriteable = L"ERROR view is not writeable";
inline constexpr int kRefused = 0;  ///< severity: the operation is refused
inline constexpr int kGoesOn = 2;   ///< severity: a look-up for writing goes on, read-only

// On the command line.
inline constexpr const wchar_t* kInvalidPath = L"%s: invalid path \"%s\"";
inline constexpr const wchar_t* kRootStays = L"%s: Kann Wurzelverzeichnis \"/\" nicht l\u00F6schen";

// The listing, from top to bottom.
inline constexpr const wchar_t* kListingBlank = L"\n";
inline constexpr const wchar_t* kListingTitle =
    L"=========== MOR = DWG FILE SYSTEM === DIRECTORY LISTING =========\n";
inline constexpr const wchar_t* kListingPath = L"%sRECURSIVE LISTING OF PATH: %s\n";
inline constexpr const wchar_t* kListingColumns = L"Typ  Memory[Byte]   pszPath\n";
inline constexpr const wchar_t* kListingRule =
    L"-----------------------------------------------------------------\n";
inline constexpr const wchar_t* kListingFile = L"File  %5ld used    %s ";
inline constexpr const wchar_t* kListingDir = L"Dir   %5ld free    %s\n";
inline constexpr const wchar_t* kListingNotFound = L"invalid pszPath        %s\n";
inline constexpr const wchar_t* kListingBreak = L"\nBreak\n";
inline constexpr const wchar_t* kListingEnd =
    L"=================================================================\n";

}  // namespace mor
