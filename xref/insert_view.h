#pragma once

#include "platform/entity_name.h"
#include "platform/geometry.h"
#include "platform/types.h"
#include "space/letter_view.h"

#include <optional>
#include <string>

/// The letter of a view of an external reference as one block reference places it. The placement is
/// read when a point is first transformed and kept from then on: a change of the block reference
/// shows only after connecting anew.
class MOR_Letter_InsertView : public CMORCadLetterView {
public:
    MOR_Letter_InsertView();
    MOR_Letter_InsertView(const MOR_Letter_InsertView& other);
    MOR_Letter_InsertView& operator=(const MOR_Letter_InsertView&) = delete;
    ~MOR_Letter_InsertView() override;

    using CMORCadLetterView::connect;
    /// False, and empty, when the entity cannot be read, has no handle, or its block is no external
    /// reference with entities.
    bool connect(const ads_name ename) override;
    [[nodiscard]] int viewType() override;
    /// Upper-case; null while not connected.
    [[nodiscard]] const wchar_t* getHandle() override;
    /// Both fail, leaving the argument unchanged, while the block reference cannot be found by its
    /// handle or read; the next call tries again. One within a reference is never found: its handle
    /// is another drawing's.
    bool toWCS(CMORMathPoint& point) override;
    bool toWCS(double* point) override;
    bool getMat(CMORAdsTransformation& transformation) override;
    /// Always a MOR_Letter_InsertView; the caller owns it.
    [[nodiscard]] CMORCadLetterView* clone() override;
    void init() override;
    void clean() override;
    using CMORCadLetterView::copyFrom;
    virtual void copyFrom(const MOR_Letter_InsertView& other);

private:
    bool ensureLoaded();
    bool loadTransformation();
    void copyInsertData(const MOR_Letter_InsertView& other);

    std::optional<std::wstring> m_handle;
    CMORAdsTransformation m_transformation;
    bool m_loaded = false;
    mor::EntityName m_insert;  ///< as it was connected; the handle must lead back to it
};
