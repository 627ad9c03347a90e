#pragma once

#include "platform/pattern.h"
#include "platform/types.h"

#include <array>
#include <string>

struct CMORMathPoint {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

/// A 3-D transformation: four rows of four, column vectors, translation in the last column.
class CMORMathTransMatrix {
public:
    CMORMathTransMatrix();  ///< the identity
    void Identity();
    /// Transforms three coordinates in place.
    void Transform(double* point) const;

    std::array<std::array<double, 4>, 4> rows{};
};

/// A transformation object; its first data member is the matrix.
class CMORAdsTransformation {
public:
    CMORAdsTransformation() = default;  ///< the identity
    virtual ~CMORAdsTransformation() = default;
    /// Takes the transformation that carries coordinates of the referenced block definition to
    /// those of the reference's owner; false, and unchanged, when `name` is no live block
    /// reference.
    virtual bool loadFromEntity(const ads_name name);

    CMORMathTransMatrix matrix;
};

/// A wildcard pattern with the rules of `acutWcMatch`; matches the whole text from the start
/// position or not at all.
class MOR_Wildcard : public MOR_RWCRegexp {
public:
    explicit MOR_Wildcard(const char* pattern);
    ~MOR_Wildcard() override;
    std::size_t index(const char* text, std::size_t* length, std::size_t start) const override;

private:
    std::wstring m_pattern;
};
