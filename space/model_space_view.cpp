#include "space/model_space_view.h"

#include "space/model_space.h"

#include <memory>

MOR_ModelSpaceView::MOR_ModelSpaceView() = default;

MOR_ModelSpaceView::MOR_ModelSpaceView(const MOR_ModelSpaceView& other) = default;

// NOLINTNEXTLINE(*noexcept*)
MOR_ModelSpaceView::MOR_ModelSpaceView(MOR_ModelSpaceView&& other) : CMORCadView(other) {}

MOR_ModelSpaceView& MOR_ModelSpaceView::operator=(const MOR_ModelSpaceView& other) = default;

// NOLINTNEXTLINE(*noexcept*)
MOR_ModelSpaceView& MOR_ModelSpaceView::operator=(MOR_ModelSpaceView&& other) {
    CMORCadView::operator=(other);
    return *this;
}

MOR_ModelSpaceView::~MOR_ModelSpaceView() = default;

bool MOR_ModelSpaceView::connect() { return CMORCadView::connect(); }

bool MOR_ModelSpaceView::connect(const ads_name /*ename*/) { return false; }

CMORCadLetterModelSpaceView::CMORCadLetterModelSpaceView() = default;

CMORCadLetterModelSpaceView::CMORCadLetterModelSpaceView(const CMORCadLetterModelSpaceView& other) =
    default;

CMORCadLetterModelSpaceView::~CMORCadLetterModelSpaceView() = default;

bool CMORCadLetterModelSpaceView::connect() {
    clean();
    setSpace(std::make_unique<CMORCadModelSpace>().release());  // setSpace owns
    if (getSpace()->connect()) return true;
    clean();
    return false;
}

int CMORCadLetterModelSpaceView::viewType() { return CMORCadView::eModelSpace; }

const wchar_t* CMORCadLetterModelSpaceView::getHandle() { return L""; }

CMORCadLetterView* CMORCadLetterModelSpaceView::clone() {
    return std::make_unique<CMORCadLetterModelSpaceView>(*this).release();  // caller owns
}
