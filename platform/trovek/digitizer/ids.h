#pragma once

#include <QMetaType>

#include <cstdint>

namespace trovek::digitizer {

/** Handle of a scanner mesh inside the service; 0 by default, which names none. */
class MeshID
{
public:
    MeshID() = default;
    explicit MeshID(std::int32_t value)
        : m_value(value)
    {}
    std::int32_t value() const { return m_value; }
    bool operator==(const MeshID& other) const { return m_value == other.m_value; }
    bool operator!=(const MeshID& other) const { return m_value != other.m_value; }

private:
    std::int32_t m_value = 0;
};

/** Handle of a scanner point cloud inside the service; 0 by default, which names none. */
class PointCloudID
{
public:
    PointCloudID() = default;
    explicit PointCloudID(std::int32_t value)
        : m_value(value)
    {}
    std::int32_t value() const { return m_value; }
    bool operator==(const PointCloudID& other) const { return m_value == other.m_value; }
    bool operator!=(const PointCloudID& other) const { return m_value != other.m_value; }

private:
    std::int32_t m_value = 0;
};

} // namespace trovek::digitizer

Q_DECLARE_METATYPE(trovek::digitizer::MeshID)
Q_DECLARE_METATYPE(trovek::digitizer::PointCloudID)
