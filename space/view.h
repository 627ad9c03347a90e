#pragma once

#include "frame/module.h"
#include "frame/owned_list.h"
#include "platform/document_data.h"
#include "platform/geometry.h"
#include "platform/types.h"

#include <memory>

class CMORCadLetterView;
class CMORCadSpace;

/// A space seen through a placement: model space as it lies, or an external reference as one of its
/// block references places it. An envelope that owns its letter; a copy has a letter of its own on
/// the same shared space. Without a letter it is empty and answers false, null or "<empty>". Must
/// not be used while another document than its own is current: it then answers like one whose space
/// is gone.
class CMORCadView : public CMORMDIDocumentVariable {
public:
    enum ViewTypeEnum : int {
        eEmpty = 0,
        eModelSpace = 1,
        eXRef = 2,
        eInsert = 3  ///< also what a copy of an xref view reports
    };

    CMORCadView();
    CMORCadView(const CMORCadView& other);
    CMORCadView& operator=(const CMORCadView& other);

    ~CMORCadView() override;
    /// Both give a plain CMORCadView that the caller owns.
    [[nodiscard]] CMORMDIDocumentVariable* CreateInstance() const override;
    [[nodiscard]] CMORMDIDocumentVariable* CreateCopy() const override;

    [[nodiscard]] virtual bool isConnected() const;
    /// Leaves the view empty; the letter lives on among the forgotten ones. False when it was
    /// empty.
    virtual bool forget();
    /// The handle of the block reference, upper-case; "" for model space, null when empty.
    [[nodiscard]] virtual const wchar_t* getHandle() const;
    virtual bool handEnt(const wchar_t* handle, ads_name result) const;
    /// The record of a symbol, of a block of the space; null when there is none. The caller
    /// releases the list.
    [[nodiscard]] virtual resbuf* tblSearch(const wchar_t* table, const wchar_t* symbol) const;
    [[nodiscard]] virtual resbuf* searchBlock(const wchar_t* block) const;
    /// Whether both reach the same space, through whichever block references; false when one
    /// reaches none.
    [[nodiscard]] virtual bool sameSpace(const CMORCadView& other) const;
    /// "ModelSpace" or the reference's name; "<empty>" without a letter, "<no-space>" for a letter
    /// without a space envelope, "<nameless>" when that envelope is empty. Never null.
    [[nodiscard]] virtual const wchar_t* SpaceName() const;
    /// Carries a point of the space (three coordinates) into world coordinates, in place; false,
    /// and unchanged, when empty or when the block reference cannot be read.
    virtual bool toWCS(CMORMathPoint& point) const;
    virtual bool toWCS(double* point) const;
    /// The transformation that `toWCS` applies; only its matrix is set.
    virtual bool getMat(CMORAdsTransformation& transformation) const;
    /// The view's own; null when empty.
    [[nodiscard]] virtual const CMORCadSpace* getSpace() const;
    [[nodiscard]] virtual bool isEmpty() const;
    /// True for model space only.
    [[nodiscard]] virtual bool isWriteable() const;

protected:
    /// Connects to the external reference that the block reference inserts, to model space. The
    /// former letter is destroyed in any case; on failure the view is empty.
    virtual bool connect(const ads_name ename);
    virtual bool connect();

public:
    [[nodiscard]] ViewTypeEnum ViewType();

    /// The current document's global view, made as a model-space view when there is none. Never
    /// null, but empty after a failed `connectTheGlobalObject`. Owned by the module.
    [[nodiscard]] static const CMORCadView* getTheGlobalObject();
    /// Switches the global view to a block reference of an external reference, to model space. On
    /// failure it is empty.
    static bool connectTheGlobalObject(const ads_name ename);
    static bool connectTheGlobalObject();
    /// Deletes the current document's global view; nothing when there is none, or when this module
    /// did not make it.
    static void deleteTheGlobalObject();

private:
    int operator==(const CMORCadView& other) const;  // same space, through the same block reference

    void initData();
    void cleanData();
    void copyData(const CMORCadView& other);

    std::unique_ptr<CMORCadLetterView> m_letter;

    friend int mor::detachModule();                    // releases what is still listed
    static mor::OwnedList<CMORCadView> s_globalViews;  // of all documents; see frame/module.cpp
};
