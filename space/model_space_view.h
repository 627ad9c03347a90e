#pragma once

#include "space/letter_view.h"
#include "space/view.h"

/// The view of model space; empty until `connect()`. Moving copies.
class MOR_ModelSpaceView : public CMORCadView {
public:
    MOR_ModelSpaceView();
    MOR_ModelSpaceView(const MOR_ModelSpaceView& other);
    MOR_ModelSpaceView(MOR_ModelSpaceView&& other);  // NOLINT(*noexcept*): copies
    MOR_ModelSpaceView& operator=(const MOR_ModelSpaceView& other);
    MOR_ModelSpaceView& operator=(MOR_ModelSpaceView&& other);  // NOLINT(*noexcept*)
    ~MOR_ModelSpaceView() override;

    bool connect() override;

private:
    bool connect(const ads_name ename) override;  // refuses; the view stays as it is
};

/// The letter of a model-space view.
class CMORCadLetterModelSpaceView : public CMORCadLetterView {
public:
    CMORCadLetterModelSpaceView();
    CMORCadLetterModelSpaceView(const CMORCadLetterModelSpaceView& other);
    CMORCadLetterModelSpaceView& operator=(const CMORCadLetterModelSpaceView&) = delete;
    ~CMORCadLetterModelSpaceView() override;

    using CMORCadLetterView::connect;
    bool connect() override;
    [[nodiscard]] int viewType() override;
    /// "", never null.
    [[nodiscard]] const wchar_t* getHandle() override;
    [[nodiscard]] CMORCadLetterView* clone() override;
};
