#include "host/documents/reference_source.h"

#include "host/permanent.h"

#include <list>
#include <system_error>
#include <utility>

namespace mor::host {

namespace {

class ReferenceSource final : public Source {
public:
    ReferenceSource(std::filesystem::path path, std::shared_ptr<Source> opened)
        : m_path(std::move(path)), m_size(opened->size()), m_stamp(stateOf(opened->descriptor())) {
        hold(std::move(opened));
    }
    ~ReferenceSource() override {
        if (m_opened) openOnes().erase(m_place);
    }
    ReferenceSource(const ReferenceSource&) = delete;
    ReferenceSource& operator=(const ReferenceSource&) = delete;

    [[nodiscard]] std::uint64_t size() const override { return m_size; }
    std::size_t read(std::uint64_t offset, char* buffer, std::size_t count) const override {
        if (!m_opened && !openAgain()) return 0;
        if (m_place != openOnes().begin())
            openOnes().splice(openOnes().begin(), openOnes(), m_place);
        return m_opened->read(offset, buffer, count);
    }
    [[nodiscard]] bool failed() const override {
        return m_failed || (m_opened && m_opened->failed());
    }

private:
    /// Those that are open, the one read last in front.
    static std::list<const ReferenceSource*>& openOnes() {
        static Permanent<std::list<const ReferenceSource*>> all;
        return *all;
    }
    void hold(std::shared_ptr<Source> opened) const {
        auto& all = openOnes();
        all.push_front(this);
        m_place = all.begin();
        m_opened = std::move(opened);
        if (all.size() <= kMostOpenReferences) return;
        all.back()->m_failed = all.back()->failed();
        all.back()->m_opened.reset();
        all.pop_back();
    }
    bool openAgain() const {
        auto opened = openFileSource(m_path);
        if (opened && stateOf(opened.value()->descriptor()) == m_stamp) {
            hold(std::move(opened.value()));
            return true;
        }
        m_failed = true;
        failReading(
            opened ? Error{ErrorKind::Unreadable, m_path.string(), 0, "changed since it was loaded"}
                   : opened.error());
        return false;
    }

    std::filesystem::path m_path;
    std::uint64_t m_size;
    FileState m_stamp;
    mutable bool m_failed = false;
    mutable std::shared_ptr<Source> m_opened;  ///< null while closed
    mutable std::list<const ReferenceSource*>::iterator m_place;
};

}  // namespace

Result<std::shared_ptr<Source>> openReferenceSource(const std::filesystem::path& path) {
    auto opened = openFileSource(path);
    if (!opened) return opened.error();
    std::error_code code;
    const std::filesystem::path absolute = std::filesystem::absolute(path, code);
    return std::shared_ptr<Source>(
        std::make_shared<ReferenceSource>(code ? path : absolute, std::move(opened.value())));
}

}  // namespace mor::host
