/// @file
/// Named option lists for writers and filters.
#ifndef IKELEX_PARAMETERS_H
#define IKELEX_PARAMETERS_H

#include <ikelex/export.h>
#include <platform/vamplatform.h>

/// One option. The JPEG writer reads "quality" as a 16- or 32-bit integer, and takes 75 without
/// one. The scale filter reads "width", "height" and "type" (see filters.h).
struct tagKelParameterItem {
    CVamString strName;    ///< compared exactly, case included
    CVamVariant varValue;  ///< see above for the kinds each key takes
};

/// A list of nCount items. pItems is null when it is empty. Names may repeat, and a look-up finds
/// the first. A list that a caller builds stays the caller's. The library reads and copies it.
struct tagKelParameters {
    unsigned int nCount;          ///< number of items
    tagKelParameterItem* pItems;  ///< the items, or null
};

/// Makes the list empty. Releases nothing, so it is for a list that holds nothing yet.
IKELEX_API void InitParameters(tagKelParameters& params);

/// Copies pSrc into pDst, which must be empty. Returns 0 and changes nothing when either is null,
/// else 1. When memory runs out, or copying a name or value throws, pDst is left empty and the
/// result is 1. The copy shares nothing with the source. Release it with DestroyParameters.
IKELEX_API int CopyParameters(tagKelParameters* pSrc, tagKelParameters* pDst);

/// Releases every item and leaves the list empty. The item array must come from CopyParameters or
/// from the non-throwing array form of new.
IKELEX_API void DestroyParameters(tagKelParameters& params);

/// The value of the first item named pszName, or null. It points into the list and is valid until
/// the list is destroyed.
IKELEX_API CVamVariant* GetParameter(const tagKelParameters& params, const char* pszName);

#endif  // IKELEX_PARAMETERS_H
