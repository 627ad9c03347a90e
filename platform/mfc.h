#pragma once

#include <stdexcept>
#include <string>
#include <vector>

class CMemoryException : public std::runtime_error {
public:
    CMemoryException() : std::runtime_error("out of memory") {}
};
class CInvalidArgException : public std::invalid_argument {
public:
    CInvalidArgException() : std::invalid_argument("invalid argument") {}
};
[[noreturn]] void AfxThrowMemoryException();
[[noreturn]] void AfxThrowInvalidArgException();

/// A wide string value.
class CString {
public:
    CString() = default;
    CString(const wchar_t* text);  // NOLINT(google-explicit-constructor): null counts as empty
    CString& operator=(const wchar_t* text);

    operator const wchar_t*() const noexcept { return m_text.c_str(); }  // NOLINT: as MFC has it
    [[nodiscard]] const wchar_t* GetString() const noexcept { return m_text.c_str(); }
    [[nodiscard]] int GetLength() const noexcept { return static_cast<int>(m_text.size()); }
    [[nodiscard]] bool IsEmpty() const noexcept { return m_text.empty(); }
    /// 0 for equal texts without regard to case; else the sign of their order.
    [[nodiscard]] int CompareNoCase(const wchar_t* other) const;
    CString& MakeUpper();
    void Empty() { m_text.clear(); }

private:
    std::wstring m_text;
};

/// A growable array of strings. Element access outside the array raises CInvalidArgException.
class CStringArray {
public:
    /// Sets the element at `index`, growing the array when it is shorter.
    void SetAtGrow(int index, const wchar_t* text);
    [[nodiscard]] const CString& operator[](int index) const;
    [[nodiscard]] CString& operator[](int index);
    [[nodiscard]] int GetSize() const noexcept { return static_cast<int>(m_items.size()); }

private:
    std::vector<CString> m_items;
};

/// What an extension module is known by.
struct AFX_EXTENSION_MODULE {
    bool bInitialized = false;
    void* hModule = nullptr;
};

/// Registers the module with the host; 0 when the host refuses it.
int AfxInitExtensionModule(AFX_EXTENSION_MODULE& module, void* instance);
/// Takes the module out of the host's chain again; `all` is false here.
void AfxTermExtensionModule(AFX_EXTENSION_MODULE& module, bool all = false);

/// Links a module's resources and classes into the host's chain, until its end or the module's.
class CDynLinkLibrary {
public:
    explicit CDynLinkLibrary(AFX_EXTENSION_MODULE& module, bool system = false);
    ~CDynLinkLibrary();
    CDynLinkLibrary(const CDynLinkLibrary&) = delete;
    CDynLinkLibrary& operator=(const CDynLinkLibrary&) = delete;

private:
    AFX_EXTENSION_MODULE& m_module;
};
