#include "xref/xref_view.h"

MOR_XRefView::MOR_XRefView() = default;

MOR_XRefView::MOR_XRefView(const MOR_XRefView& other) = default;

// NOLINTNEXTLINE(*noexcept*)
MOR_XRefView::MOR_XRefView(MOR_XRefView&& other) : CMORCadView(other) {}

MOR_XRefView& MOR_XRefView::operator=(const MOR_XRefView& other) = default;

// NOLINTNEXTLINE(*noexcept*)
MOR_XRefView& MOR_XRefView::operator=(MOR_XRefView&& other) {
    CMORCadView::operator=(other);
    return *this;
}

MOR_XRefView::~MOR_XRefView() = default;

bool MOR_XRefView::connect(const ads_name ename) { return CMORCadView::connect(ename); }

bool MOR_XRefView::connect() { return false; }

MOR_Letter_XRefView::MOR_Letter_XRefView() = default;

MOR_Letter_XRefView::MOR_Letter_XRefView(const MOR_Letter_XRefView& other) = default;

MOR_Letter_XRefView::~MOR_Letter_XRefView() = default;

int MOR_Letter_XRefView::viewType() { return CMORCadView::eXRef; }
