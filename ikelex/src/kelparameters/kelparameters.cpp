// Parameter lists. A copy owns its array of items. The host's string and variant classes decide
// what a copy shares.
#include "kelparameters.h"

#include <memory>
#include <new>
#include <utility>

void InitParameters(tagKelParameters& params) {
    params.nCount = 0;
    params.pItems = nullptr;
}

int CopyParameters(tagKelParameters* pSrc, tagKelParameters* pDst) {
    if (pSrc == nullptr || pDst == nullptr) {
        return 0;
    }
    const unsigned int nCount = pSrc->nCount;
    const tagKelParameterItem* const pItems = pSrc->pItems;
    InitParameters(*pDst);
    if (nCount == 0 || pItems == nullptr) {
        return 1;
    }
    // The strings and values are the host's and may throw. Until all are copied the guard owns the
    // array, so that an exception leaves the empty list.
    try {
        std::unique_ptr<tagKelParameterItem[]> pCopy(new (std::nothrow)
                                                         tagKelParameterItem[nCount]);
        if (pCopy == nullptr) {
            return 1;
        }
        for (unsigned int i = 0; i < nCount; ++i) {
            pCopy[i].strName = pItems[i].strName;
            pCopy[i].varValue = pItems[i].varValue;
            // A host's assignment may share storage with the source. Clone ends that.
            pCopy[i].strName.Clone(pItems[i].strName);
            pCopy[i].varValue.Clone(pItems[i].varValue);
        }
        pDst->nCount = nCount;
        pDst->pItems = pCopy.release();
    } catch (...) {
        // What is left when memory fails is an empty list, in which every look-up finds its
        // default.
    }
    return 1;
}

void DestroyParameters(tagKelParameters& params) {
    tagKelParameterItem* const pItems = params.pItems;
    InitParameters(params);
    delete[] pItems;
}

CVamVariant* GetParameter(const tagKelParameters& params, const char* pszName) {
    if (params.pItems == nullptr || pszName == nullptr) {
        return nullptr;
    }
    for (unsigned int i = 0; i < params.nCount; ++i) {
        if (params.pItems[i].strName.Match(pszName)) {
            return &params.pItems[i].varValue;
        }
    }
    return nullptr;
}

CKelParameterMgr::CKelParameterMgr() {
    InitParameters(m_Params);
}

CKelParameterMgr::~CKelParameterMgr() {
    try {
        DestroyParameters(m_Params);
    } catch (...) {
        // A host's string or value threw on release. By then the list was empty.
    }
}

int CKelParameterMgr::SetParameters(tagKelParameters* pParams) {
    // Copied before the held list goes, because pParams may be the held list.
    tagKelParameters list;
    InitParameters(list);
    const int nResult = CopyParameters(pParams, &list);
    std::swap(m_Params, list);
    DestroyParameters(list);
    return nResult;
}

CVamVariant* CKelParameterMgr::GetParameter(const char* pszName) {
    return ::GetParameter(m_Params, pszName);
}
