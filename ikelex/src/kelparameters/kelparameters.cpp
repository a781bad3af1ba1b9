#include "kelparameters.h"

void InitParameters(tagKelParameters&) {}
int CopyParameters(tagKelParameters*, tagKelParameters*) { return 0; }
void DestroyParameters(tagKelParameters&) {}
CVamVariant* GetParameter(const tagKelParameters&, const char*) { return nullptr; }
CKelParameterMgr::CKelParameterMgr() : m_Params() {}
CKelParameterMgr::~CKelParameterMgr() = default;
int CKelParameterMgr::SetParameters(tagKelParameters*) { return 0; }
CVamVariant* CKelParameterMgr::GetParameter(const char*) { return nullptr; }
