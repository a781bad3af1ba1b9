/// @file
/// CVamVariant, the tagged value of a parameter.
#ifndef PLATFORM_VAMVARIANT_H
#define PLATFORM_VAMVARIANT_H

/// The type tags of CVamVariant. Any other tag means "no usable value" to the library.
enum VamVariantType {
    VAM_EMPTY = 0,
    VAM_INT16 = 4,
    VAM_UINT16 = 5,
    VAM_INT32 = 6,
    VAM_UINT32 = 7,
    VAM_LONG = 8,   ///< integer kind of which the library reads the low 32 bits
    VAM_ULONG = 9,  ///< likewise
    VAM_FLOAT = 10,
    VAM_DOUBLE = 11
};

/// An 8-bit type tag and an 8-byte value. The value's kind lies in the first bytes of m_Value as
/// the machine stores that kind. The other bytes are 0.
class CVamVariant {
  public:
    CVamVariant();                          ///< VAM_EMPTY
    CVamVariant(short nValue);              ///< VAM_INT16
    CVamVariant(unsigned short nValue);     ///< VAM_UINT16
    CVamVariant(int nValue);                ///< VAM_INT32
    CVamVariant(unsigned int nValue);       ///< VAM_UINT32
    CVamVariant(float fValue);              ///< VAM_FLOAT
    CVamVariant(double dValue);             ///< VAM_DOUBLE
    CVamVariant(const CVamVariant& other);  ///< a copy of other
    ~CVamVariant();

    /// Becomes a copy of other.
    CVamVariant& operator=(const CVamVariant& other);

    /// Makes this value a copy of other that shares no storage with it.
    void Clone(const CVamVariant& other);

    /// Sets any tag with any 8-byte value.
    void Set(unsigned char byType, unsigned long long nValue);

    unsigned char m_byType;      ///< a VamVariantType, or any other tag
    unsigned long long m_Value;  ///< the value's bytes
};

#endif  // PLATFORM_VAMVARIANT_H
