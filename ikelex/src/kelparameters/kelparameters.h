/// @file
/// CKelParameterMgr, the common root of every reader, writer and filter that takes options.
#ifndef KELPARAMETERS_KELPARAMETERS_H
#define KELPARAMETERS_KELPARAMETERS_H

#include <ikelex/parameters.h>

/// Holds a copy of the caller's parameter list for the length of one call.
class IKELEX_API CKelParameterMgr {
  public:
    CKelParameterMgr();
    CKelParameterMgr(const CKelParameterMgr&) = delete;
    CKelParameterMgr& operator=(const CKelParameterMgr&) = delete;

    /// Releases the list. Lets no exception escape.
    virtual ~CKelParameterMgr();

    /// Replaces the held list by a copy of pParams. Returns 0 for null, else 1. After null or a
    /// copy that fails the held list is empty.
    virtual int SetParameters(tagKelParameters* pParams);

    /// The value of the first item of that name, or null. Valid as long as the list is held.
    virtual CVamVariant* GetParameter(const char* pszName);

    tagKelParameters m_Params;  ///< the held list; empty until SetParameters
};

#endif  // KELPARAMETERS_KELPARAMETERS_H
