#include "tests/dwgfs/store_fixture.h"

#include "dwgfs/names.h"
#include "platform/entity_calls.h"
#include "tests/support/test_folder.h"

#include <algorithm>
#include <utility>

namespace mor::test {

namespace {

constexpr int kMaxDepth = 600;

std::string attributeText(const host::RecordAttributes& attributes, std::wstring_view name) {
    const auto found = std::ranges::find(attributes.items, name, &host::RecordAttribute::name);
    return found == attributes.items.end() ? std::string{}
                                           : host::toUtf8(host::stringOf(found->value));
}

}  // namespace

std::wstring wide(std::string_view text) { return host::fromUtf8(text).value_or(L"?"); }

CMORAdsLispVar value(std::string_view lisp) {
    host::Result<CMORAdsLispVar> result = host::readLisp(lisp);
    EXPECT_TRUE(result) << lisp;
    return result ? result.value() : CMORAdsLispVar{};
}

std::string joined(const CMORStringList& list) {
    std::string result;
    for (std::size_t i = 0; i < list.Entries(); ++i)
        result += (i == 0 ? "" : " ") + host::toUtf8(list.Nth(i));
    return result;
}

void StoreTest::SetUp() {
    DrawingTest::SetUp();
    // A removal in another test may have asked to skip this one's first check.
    OpenFileSystem::callBack(MOR_AdsMsgSystemClass::CheckDwgFileSystem);
}

CMORCadDwgFileSystem& StoreTest::fs() {
    CMORCadDwgFileSystem* object = CMORCadDwgFileSystem::getTheGlobalObject();
    if (object == nullptr) throw std::runtime_error("the document has no file system");
    return *object;
}

bool StoreTest::write(std::string_view path, std::string_view lisp) {
    return fs().write(wide(path).c_str(), value(lisp));
}

std::string StoreTest::read(std::string_view path) {
    static const CMORAdsLispVar s_unread{L"\u0001unread"};
    CMORAdsLispVar result = s_unread;
    if (!fs().read(wide(path).c_str(), result)) return "false";
    return host::sameValue(result, s_unread) ? "unread" : host::lispText(result);
}

bool StoreTest::del(std::string_view path) { return fs().del(wide(path).c_str()); }

std::string StoreTest::tree() const {
    if (blockEntity().isNone()) return "none";
    const std::string root =
        attributeText(host::recordAttributes(document(), blockEntity()), kRootLink);
    if (root.empty()) return "no root";
    const auto entity = host::findHandle(document(), wide(root));
    if (!entity) return "/ missing";
    if (host::recordInfo(document(), *entity)->erased) return "/ erased";
    return describe(*entity, "/", 0);
}

std::string StoreTest::describe(EntityName dir, const std::string& name, int depth) const {
    if (depth > kMaxDepth) return name + " ...";
    std::string entries;
    for (const auto& attribute : host::recordAttributes(document(), dir).items) {
        if (attribute.name == kIdAttribute || attribute.name == kInfoAttribute) continue;
        if (!entries.empty()) entries += ' ';
        if (attribute.name.starts_with(L'^'))
            entries += describeLink(attribute, depth);
        else
            entries += host::toUtf8(attribute.name) + "=" + host::lispText(attribute.value);
    }
    return entries.empty() ? name : name + " [" + entries + "]";
}

std::string StoreTest::describeLink(const host::RecordAttribute& link, int depth) const {
    const std::string name = host::toUtf8(link.name.substr(1)) + "/";
    const auto entity = host::findHandle(document(), host::stringOf(link.value));
    if (!entity) return name + " missing";
    if (host::recordInfo(document(), *entity)->erased) return name + " erased";
    return describe(*entity, name, depth + 1);
}

std::string StoreTest::layer() const {
    const auto record = host::findSymbol(document(), "LAYER", kControlLayer);
    if (!record) return "absent";
    const int flags = std::stoi(host::recordGroup(document(), *record, 70).value_or("0"));
    return std::string{(flags & 1) != 0 ? "frozen" : "thawed"} +
           ((flags & 4) != 0 ? " locked" : " unlocked");
}

std::size_t StoreTest::inserts() const {
    std::size_t count = 0;
    host::forEachRecord(document(), [this, &count](const host::RecordInfo& record) {
        if (record.type != "INSERT" || record.erased) return;
        const bool ours = host::recordGroup(document(), record.name, 2) == "MOR_DWGFILES" &&
                          host::recordGroup(document(), record.name, 8) == "MOR_CONTROL_LAYER";
        count += ours ? 1 : 0;
    });
    return count;
}

EntityName StoreTest::entityOf(std::string_view path) const {
    EntityName entity = blockEntity();
    std::wstring link = kRootLink;
    while (true) {
        const std::string handle = attributeText(host::recordAttributes(document(), entity), link);
        const auto next = host::findHandle(document(), wide(handle));
        EXPECT_TRUE(next) << path;
        if (!next) return {};
        entity = *next;
        if (path.size() <= 1) return entity;
        path.remove_prefix(1);
        const std::size_t end = std::min(path.find('/'), path.size());
        link = L"^" + wide(path.substr(0, end));
        path.remove_prefix(end);
    }
}

std::wstring StoreTest::handleOf(std::string_view path) const {
    return wide(host::recordGroup(document(), entityOf(path), 5).value());
}

EntityName StoreTest::blockEntity() const {
    return host::firstEntityOfBlock(document(), kFileSystemBlock).value_or(EntityName{});
}

void StoreTest::toggleErased(EntityName entity) { EXPECT_EQ(acdbEntDel(entity), RTNORM); }

void StoreTest::setText(EntityName entity, const wchar_t* attribute, const wchar_t* text) {
    CMOREntity object;
    EXPECT_TRUE(object.Connect(entity));
    EXPECT_TRUE(object.SetAttributeText(attribute, text));
    EXPECT_TRUE(object.Flush());
}

void StoreTest::setLayer(bool frozen, bool locked) {
    CMORAdsLayer object;
    EXPECT_TRUE(object.Connect(kControlLayer) || object.Create(kControlLayer));
    object.IsFrozen(frozen);
    object.IsLocked(locked);
    EXPECT_TRUE(object.Flush());
}

void StoreTest::reopen() {
    const std::filesystem::path file = testFolder() / "reopened.dxf";
    const auto saved = host::saveDocument(document(), {.output = file, .backup = false});
    ASSERT_TRUE(saved) << saved.error().message();
    open(file);
    std::filesystem::remove(file);
}

}  // namespace mor::test
