#pragma once

#include <cstdint>

/// The database's identifier of an object; 0 means none.
class AcDbObjectId {
public:
    AcDbObjectId() = default;
    explicit AcDbObjectId(std::int64_t drawing, std::int64_t record)
        : m_drawing(drawing), m_record(record) {}
    [[nodiscard]] bool isNull() const { return m_record == 0; }
    [[nodiscard]] std::int64_t drawing() const { return m_drawing; }
    [[nodiscard]] std::int64_t record() const { return m_record; }
    friend bool operator==(const AcDbObjectId&, const AcDbObjectId&) = default;

private:
    std::int64_t m_drawing = 0;
    std::int64_t m_record = 0;
};
