#include "platform/mfc.h"

#include "host/faults.h"
#include "host/permanent.h"
#include "platform/runtime.h"

#include <algorithm>
#include <utility>

namespace {

struct Link {
    AFX_EXTENSION_MODULE* module = nullptr;
    CDynLinkLibrary* library = nullptr;
};

// Owns nothing: a library leaves it at its end or when its module ends, whatever comes first.
std::vector<Link>& chain() {
    static mor::host::Permanent<std::vector<Link>> s_chain;
    return *s_chain;
}

}  // namespace

void AfxThrowMemoryException() { throw CMemoryException{}; }
void AfxThrowInvalidArgException() { throw CInvalidArgException{}; }

CString::CString(const wchar_t* text) : m_text(text == nullptr ? L"" : text) {}

CString& CString::operator=(const wchar_t* text) {
    if (text == nullptr)
        m_text.clear();
    else
        m_text.assign(text);  // which may be our own
    return *this;
}

int CString::CompareNoCase(const wchar_t* other) const {
    return mor::compareNoCase(m_text, other == nullptr ? L"" : other);
}

CString& CString::MakeUpper() {
    for (wchar_t& c : m_text) c = mor::toUpper(c);
    return *this;
}

void CStringArray::SetAtGrow(int index, const wchar_t* text) {
    if (index < 0) AfxThrowInvalidArgException();
    CString copy{text};
    const auto position = static_cast<std::size_t>(index);
    if (position >= m_items.size()) m_items.resize(position + 1);
    m_items[position] = std::move(copy);
}

const CString& CStringArray::operator[](int index) const {
    if (index < 0 || index >= GetSize()) AfxThrowInvalidArgException();
    return m_items[static_cast<std::size_t>(index)];
}

CString& CStringArray::operator[](int index) {
    return const_cast<CString&>(std::as_const(*this)[index]);
}

int AfxInitExtensionModule(AFX_EXTENSION_MODULE& module, void* instance) {
    if (mor::host::faults::shouldFail("AfxInitExtensionModule")) return 0;
    module.bInitialized = true;
    module.hModule = instance;
    return 1;
}

void AfxTermExtensionModule(AFX_EXTENSION_MODULE& module, bool /*all*/) {
    std::erase_if(chain(), [&module](const Link& link) { return link.module == &module; });
    module = {};
}

CDynLinkLibrary::CDynLinkLibrary(AFX_EXTENSION_MODULE& module, bool /*system*/) : m_module(module) {
    chain().push_back({&m_module, this});
}

CDynLinkLibrary::~CDynLinkLibrary() {
    std::erase_if(chain(), [this](const Link& link) { return link.library == this; });
}
