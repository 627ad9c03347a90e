#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// An ordered list of wide strings, held by value.
class CMORStringList {
public:
    CMORStringList();
    CMORStringList(const CMORStringList& other);
    CMORStringList& operator=(const CMORStringList& other);
    virtual ~CMORStringList();

    [[nodiscard]] std::size_t Entries() const;
    /// The text at `index`, from 0; null outside the list. Valid until the list changes.
    [[nodiscard]] const wchar_t* Nth(std::size_t index) const;
    /// Adds at the end, at the front; false for a null text.
    bool Append(const wchar_t* text);
    bool Prepend(const wchar_t* text);
    /// Empties the list; true.
    bool Reset();

private:
    std::vector<std::wstring> m_items;
};
