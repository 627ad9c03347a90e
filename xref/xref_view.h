#pragma once

#include "platform/types.h"
#include "space/view.h"
#include "xref/insert_view.h"

/// The view of an external reference through a block reference; empty until it is connected. Moving
/// copies, and a copy reports the type of an insert view.
class MOR_XRefView : public CMORCadView {
public:
    MOR_XRefView();
    MOR_XRefView(const MOR_XRefView& other);
    MOR_XRefView(MOR_XRefView&& other);  // NOLINT(*noexcept*): copies
    MOR_XRefView& operator=(const MOR_XRefView& other);
    MOR_XRefView& operator=(MOR_XRefView&& other);  // NOLINT(*noexcept*)
    ~MOR_XRefView() override;

    bool connect(const ads_name ename) override;

private:
    bool connect() override;  // refuses; the view stays as it is
};

/// The letter that connecting to a block reference makes.
class MOR_Letter_XRefView : public MOR_Letter_InsertView {
public:
    MOR_Letter_XRefView();
    MOR_Letter_XRefView& operator=(const MOR_Letter_XRefView&) = delete;
    MOR_Letter_XRefView(const MOR_Letter_XRefView& other);
    ~MOR_Letter_XRefView() override;

    [[nodiscard]] int viewType() override;
};
