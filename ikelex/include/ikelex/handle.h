// Optional C++11 helpers over the interface, for ownership, parameter lists and results. Everything
// here is inline code of the host's own program. The library exports nothing for it, and no type of
// this file crosses the interface.
#ifndef IKELEX_HANDLE_H
#define IKELEX_HANDLE_H

/// @file
/// Optional C++11 helpers over the interface. `ikelex.h` does not include this header.
///
/// A host that links the library needs nothing else. A host that loads the library at run time can
/// use the helpers too, as long as they call nothing that it does not link.
/// - `KelImagePtr`, `KelApplyFilter` and `KelNewImage` with both functions need nothing. Neither do
///   the value and the test of a `KelStatus`.
/// - `KelParameters` needs the platform layer to be linked, for strings and variants.
/// - `KelNewImage()` and the texts of a `KelStatus` need the library itself.
///
/// The file compiles without exceptions and without run-time type information. `KelParameters` and
/// `KelStatus::ToString` allocate with the host's standard library and fail as it fails.

#include <ikelex/ikelex.h>
#include <platform/vamplatform.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

/// A function that makes an image, such as `CreateImageObject`.
typedef void (*KelCreateFunction)(IKelImage**);
/// A function that ends an image, such as `DestroyImageObject`.
typedef void (*KelDestroyFunction)(IKelImage*);

/// Ends an image of a `KelImagePtr`.
class KelImageEnd {
  public:
    /// Ends images with `DestroyImageObject` of the linked library.
    KelImageEnd() : m_pfnDestroy(&DestroyImageObject) {}
    /// Ends images with the function that a host has found at run time.
    explicit KelImageEnd(KelDestroyFunction pfnDestroy) : m_pfnDestroy(pfnDestroy) {}

    /// Ends the image.
    void operator()(IKelImage* pImage) const { m_pfnDestroy(pImage); }

  private:
    KelDestroyFunction m_pfnDestroy;
};

/// Owns an image and ends it with `DestroyImageObject`.
typedef std::unique_ptr<IKelImage, KelImageEnd> KelImagePtr;

/// A new empty image from functions that a host has found at run time. Null when memory runs out.
inline KelImagePtr KelNewImage(KelCreateFunction pfnCreate, KelDestroyFunction pfnDestroy) {
    IKelImage* pImage = nullptr;
    pfnCreate(&pImage);
    return KelImagePtr(pImage, KelImageEnd(pfnDestroy));
}

/// A new empty image from the linked library. Null when memory runs out.
inline KelImagePtr KelNewImage() {
    return KelNewImage(&CreateImageObject, &DestroyImageObject);
}

/// A result code that can be tested and printed. Every operation that returns a `KelResult`
/// converts to it.
class KelStatus {
  public:
    /// The given code.
    KelStatus(KelResult nResult = KEL_OK) : m_nResult(nResult) {}
    /// `Rotate` and the streams answer with true for success, which is no result code.
    KelStatus(bool) = delete;

    /// True for success.
    explicit operator bool() const { return m_nResult == KEL_OK; }
    /// The code itself.
    KelResult Code() const { return m_nResult; }
    /// The code's name, such as "KEL_ERR_FILE".
    const char* Name() const { return KelResultName(m_nResult); }
    /// What the code means, one sentence.
    const char* Meaning() const { return KelResultMeaning(m_nResult); }
    /// Name and meaning in one line.
    std::string ToString() const { return std::string(Name()) + ": " + Meaning(); }

    /// Whether both are the same code.
    friend bool operator==(KelStatus a, KelStatus b) { return a.m_nResult == b.m_nResult; }
    /// Whether they are different codes.
    friend bool operator!=(KelStatus a, KelStatus b) { return a.m_nResult != b.m_nResult; }

    /// Writes name and meaning to a stream of the standard library or of a host.
    template <class Stream>
    friend Stream& operator<<(Stream& stream, KelStatus status) {
        stream << status.Name() << ": " << status.Meaning();
        return stream;
    }

  private:
    KelResult m_nResult;
};

/// A parameter list that is built in place and owns its items, as in
/// `image->ApplyFilter(KEL_FILTER_SCALE, KelParameters{}.Set("width", 320).Set("height", 240))`.
class KelParameters {
  public:
    /// The empty list.
    KelParameters() : m_Items(), m_List() {}
    /// A copy that shares nothing with the other list.
    KelParameters(const KelParameters& other) : m_Items(other.m_Items), m_List() {}
    /// Becomes a copy that shares nothing with the other list.
    KelParameters& operator=(const KelParameters& other) {
        m_Items = other.m_Items;
        return *this;
    }

    /// Sets the value of a name. A name that is set again keeps its place and takes the new value.
    KelParameters& Set(const char* pszName, const CVamVariant& varValue) {
        for (tagKelParameterItem& item : m_Items) {
            if (item.strName.Match(pszName)) {
                item.varValue = varValue;
                return *this;
            }
        }
        m_Items.push_back(tagKelParameterItem{CVamString(pszName), varValue});
        return *this;
    }

    /// The list as the interface takes it. Valid until this object changes or ends.
    operator tagKelParameters*() {
        m_List.nCount = static_cast<unsigned int>(m_Items.size());
        m_List.pItems = m_Items.empty() ? nullptr : &m_Items[0];
        return &m_List;
    }

  private:
    std::vector<tagKelParameterItem> m_Items;
    tagKelParameters m_List;
};

/// Applies a filter and leaves `image` alone. `result` then owns the new image. It is null on
/// failure.
inline KelStatus KelApplyFilter(const KelImagePtr& image, KelImagePtr& result,
                                KelImageFilterType eType, tagKelParameters* pParams) {
    IKelImage* pResult = nullptr;
    const KelStatus status = image->ApplyFilter(&pResult, eType, pParams);
    result = KelImagePtr(pResult, image.get_deleter());
    return status;
}

#endif  // IKELEX_HANDLE_H
