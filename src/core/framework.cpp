// The exceptions and the object base class. Archives are in archive.cpp, arrays in the header.
#include "tarvex/framework.h"

namespace tarvex {

CInvalidArgException::CInvalidArgException() : std::invalid_argument("invalid argument") {}
CInvalidArgException::~CInvalidArgException() = default;

CMemoryException::CMemoryException() noexcept = default;
CMemoryException::~CMemoryException() = default;
const char* CMemoryException::what() const noexcept { return "out of memory"; }

CArchiveException::CArchiveException(const char* what) : std::runtime_error(what) {}
CArchiveException::CArchiveException(const std::string& what) : std::runtime_error(what) {}
CArchiveException::~CArchiveException() = default;

void AfxThrowInvalidArgException() { throw CInvalidArgException(); }
void AfxThrowMemoryException() { throw CMemoryException(); }

const CRuntimeClass* CObject::GetRuntimeClass() const {
    static constexpr CRuntimeClass object{"CObject", sizeof(CObject)};
    return &object;
}
CObject::~CObject() = default;
void CObject::Serialize(CArchive&) {}
void CObject::AssertValid() const {}
void CObject::Dump() const {}

const CRuntimeClass* CDC::GetRuntimeClass() const {
    static constexpr CRuntimeClass context{"CDC", sizeof(CDC)};
    return &context;
}

const CRuntimeClass* CPtrArray::GetRuntimeClass() const {
    static constexpr CRuntimeClass pointers{"CPtrArray", sizeof(CPtrArray)};
    return &pointers;
}
void CPtrArray::Serialize(CArchive&) {}

const CRuntimeClass* CDWordArray::GetRuntimeClass() const {
    static constexpr CRuntimeClass words{"CDWordArray", sizeof(CDWordArray)};
    return &words;
}

}  // namespace tarvex
