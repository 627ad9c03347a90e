#include "xref/insert_view.h"

#include "platform/entity.h"
#include "platform/entity_calls.h"
#include "platform/runtime.h"
#include "space/view.h"
#include "xref/xref_space.h"

#include <memory>

namespace {

constexpr int kGroupBlockName = 2;

/// Other records have a text in the same group.
bool isBlockReference(const CMOREntity& entity) {
    return entity.Type().CompareNoCase(L"INSERT") == 0;
}

}  // namespace

MOR_Letter_InsertView::MOR_Letter_InsertView() = default;

MOR_Letter_InsertView::MOR_Letter_InsertView(const MOR_Letter_InsertView& other)
    : CMORCadLetterView(other) {
    copyInsertData(other);
}

MOR_Letter_InsertView::~MOR_Letter_InsertView() = default;

bool MOR_Letter_InsertView::connect(const ads_name ename) {
    clean();
    CMOREntity entity;
    if (!entity.Connect(ename) || !isBlockReference(entity)) return false;
    setSpace(std::make_unique<MOR_XRef>().release());  // setSpace owns
    const wchar_t* block = nullptr;
    static_cast<void>(entity.GetEntityEntry(kGroupBlockName, block));  // null stands for no value
    if (block != nullptr && getSpace()->connect(block) && !entity.Handle().IsEmpty()) {
        m_handle = mor::upperCase(entity.Handle().GetString());
        m_insert = mor::EntityName(ename);
        return true;
    }
    clean();
    return false;
}

int MOR_Letter_InsertView::viewType() { return CMORCadView::eInsert; }

const wchar_t* MOR_Letter_InsertView::getHandle() { return m_handle ? m_handle->c_str() : nullptr; }

bool MOR_Letter_InsertView::toWCS(CMORMathPoint& point) {
    double coordinates[] = {point.x, point.y, point.z};
    if (!toWCS(coordinates)) return false;
    point = {coordinates[0], coordinates[1], coordinates[2]};
    return true;
}

bool MOR_Letter_InsertView::toWCS(double* point) {
    if (!ensureLoaded()) return false;
    m_transformation.matrix.Transform(point);
    return true;
}

bool MOR_Letter_InsertView::getMat(CMORAdsTransformation& transformation) {
    if (!ensureLoaded()) return false;
    transformation.matrix = m_transformation.matrix;
    return true;
}

CMORCadLetterView* MOR_Letter_InsertView::clone() {
    return std::make_unique<MOR_Letter_InsertView>(*this).release();  // caller owns
}

void MOR_Letter_InsertView::init() {
    m_handle.reset();
    m_insert = {};
    m_loaded = false;
    CMORCadLetterView::init();
}

void MOR_Letter_InsertView::clean() {
    m_handle.reset();
    m_insert = {};
    m_loaded = false;
    CMORCadLetterView::clean();
}

void MOR_Letter_InsertView::copyFrom(const MOR_Letter_InsertView& other) {
    CMORCadLetterView::copyFrom(other);  // cleans first, so the insert's data comes after it
    copyInsertData(other);
}

bool MOR_Letter_InsertView::ensureLoaded() {
    return !isEmpty() && (m_loaded || loadTransformation());
}

bool MOR_Letter_InsertView::loadTransformation() {
    if (!isConnected() || m_loaded) return false;
    ads_name ename{};
    if (acdbHandEnt(getHandle(), ename) != RTNORM) return false;
    // An insert within a reference has a handle of that drawing: in this one it may name anything,
    // even another insert of the same block.
    if (mor::EntityName(ename) != m_insert) return false;
    m_loaded = m_transformation.loadFromEntity(ename);
    return m_loaded;
}

void MOR_Letter_InsertView::copyInsertData(const MOR_Letter_InsertView& other) {
    m_transformation = {};
    m_handle = other.m_handle;
    m_insert = other.m_insert;
    m_loaded = false;
    if (!m_handle) return;
    m_transformation.matrix = other.m_transformation.matrix;
    m_loaded = other.m_loaded;
}
