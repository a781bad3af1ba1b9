// The tagged values. How the machine stores a value decides the bytes of the field.
#include <platform/vamvariant.h>

#include <cstring>

namespace {

// The 8-byte field with value's own bytes first, then zeros.
template <typename Value>
unsigned long long Pack(const Value& value) {
    unsigned long long nPacked = 0;
    std::memcpy(&nPacked, &value, sizeof value);
    return nPacked;
}

}  // namespace

CVamVariant::CVamVariant() : m_byType(VAM_EMPTY), m_Value(0) {}
CVamVariant::CVamVariant(short nValue) : m_byType(VAM_INT16), m_Value(Pack(nValue)) {}
CVamVariant::CVamVariant(unsigned short nValue) : m_byType(VAM_UINT16), m_Value(Pack(nValue)) {}
CVamVariant::CVamVariant(int nValue) : m_byType(VAM_INT32), m_Value(Pack(nValue)) {}
CVamVariant::CVamVariant(unsigned int nValue) : m_byType(VAM_UINT32), m_Value(Pack(nValue)) {}
CVamVariant::CVamVariant(float fValue) : m_byType(VAM_FLOAT), m_Value(Pack(fValue)) {}
CVamVariant::CVamVariant(double dValue) : m_byType(VAM_DOUBLE), m_Value(Pack(dValue)) {}
CVamVariant::CVamVariant(const CVamVariant& other) = default;
CVamVariant::~CVamVariant() = default;

CVamVariant& CVamVariant::operator=(const CVamVariant& other) = default;

void CVamVariant::Clone(const CVamVariant& other) {
    *this = other;
}

void CVamVariant::Set(unsigned char byType, unsigned long long nValue) {
    m_byType = byType;
    m_Value = nValue;
}
