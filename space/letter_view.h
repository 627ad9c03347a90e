#pragma once

#include "platform/geometry.h"
#include "platform/types.h"

#include <memory>

class CMORCadSpace;

/// The implementation behind a view: owns the space envelope through which it reaches a space.
/// Without a space envelope it is empty. The base class sees the space as it lies.
class CMORCadLetterView {
public:
    CMORCadLetterView();
    CMORCadLetterView(const CMORCadLetterView& other);
    CMORCadLetterView& operator=(const CMORCadLetterView&) = delete;

    virtual ~CMORCadLetterView();
    /// Connects through a block reference, to model space; the base can do neither.
    virtual bool connect(const ads_name ename);
    virtual bool connect();
    [[nodiscard]] virtual bool isConnected();
    /// Drops the space envelope, which lives on among the forgotten ones; false when empty.
    virtual bool forget();
    [[nodiscard]] virtual bool isWriteable();
    /// A value of CMORCadView::ViewTypeEnum.
    [[nodiscard]] virtual int viewType() = 0;
    /// The handle of the block reference; null here. Belongs to the letter.
    [[nodiscard]] virtual const wchar_t* getHandle();
    virtual bool handEnt(const wchar_t* handle, ads_name result);
    [[nodiscard]] virtual resbuf* searchBlock(const wchar_t* block);
    [[nodiscard]] virtual resbuf* tblSearch(const wchar_t* table, const wchar_t* symbol);
    /// Carries a point of the space into world coordinates; false, and unchanged, on failure.
    virtual bool toWCS(CMORMathPoint& point);
    virtual bool toWCS(double* point);
    /// The matrix that `toWCS` applies; false, and unchanged, on failure.
    virtual bool getMat(CMORAdsTransformation& transformation);
    /// The letter's own; null when empty.
    [[nodiscard]] virtual CMORCadSpace* getSpace();
    [[nodiscard]] virtual bool isEmpty();
    /// A letter of its own on the same space; the caller owns it.
    [[nodiscard]] virtual CMORCadLetterView* clone() = 0;
    /// Takes ownership of `space`, in place of the former one.
    virtual void setSpace(CMORCadSpace* space);
    virtual void init();
    virtual void clean();
    virtual void copyFrom(const CMORCadLetterView& other);

private:
    std::unique_ptr<CMORCadSpace> m_space;
};
