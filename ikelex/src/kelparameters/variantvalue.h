// Values of variants.
#ifndef KELPARAMETERS_VARIANTVALUE_H
#define KELPARAMETERS_VARIANTVALUE_H

#include <platform/vamplatform.h>

#include <cstdint>
#include <cstring>
#include <optional>

namespace kel {

// The value of a variant as its kind lies in memory.
template <typename Kind>
Kind ValueAs(const CVamVariant& variant) {
    Kind value;
    std::memcpy(&value, &variant.m_Value, sizeof value);
    return value;
}

// The low 32 bits of an integer of any kind. Nothing for other kinds.
inline std::optional<int> IntegerOf(const CVamVariant& variant) {
    switch (variant.m_byType) {
        case VAM_INT16:
            return ValueAs<std::int16_t>(variant);
        case VAM_UINT16:
            return ValueAs<std::uint16_t>(variant);
        case VAM_INT32:
        case VAM_UINT32:
        case VAM_LONG:
        case VAM_ULONG:
            return ValueAs<std::int32_t>(variant);
        default:
            return std::nullopt;
    }
}

}  // namespace kel

#endif  // KELPARAMETERS_VARIANTVALUE_H
