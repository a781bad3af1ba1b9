// Runs the two-pass scaler with the kernels and widths of the scale filter. It gives the same bytes
// as the filter.
#include "scalejob.h"

#include <kelbitmap/kelbitmap.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <utility>

#include "newpicture.h"

namespace {

using Scaler = C2PassScale<CDataRGB_UBYTE>;

// The scaler's callback has no context, so these are shared by all jobs.
std::atomic<int> g_nPercent{0};
std::atomic<bool> g_bCancel{false};

bool Progress(unsigned char byPercent) {
    g_nPercent = byPercent;
    return !g_bCancel;
}

// Brings a picture to 24 bits, in place. The box kernel at unchanged size reproduces every pixel.
KelStatus MakeRgb(IKelImage& image) {
    const bool bRgb = image.GetBitsPerPixel() == 24;
    return bRgb ? KEL_OK
                : image.ApplyFilter(KEL_FILTER_SCALE, KelParameters{}.Set("type", KEL_SCALE_BOX));
}

KelStatus Scale(Piece& piece) {
    const KelStatus status = MakeRgb(*piece.image);
    KelImagePtr result = NewPicture(piece.nWidth, piece.nHeight, 24);
    if (!status || result == nullptr) {
        return status ? KelStatus(KEL_ERR_MEMORY) : status;
    }
    const auto rows = [](const KelImagePtr& image) {
        return reinterpret_cast<Scaler::PixelClass**>(image->GetLineArray());
    };
    const tagKelScaleKernel& entry = KernelOf(piece.eKernel);
    const std::unique_ptr<PLContribDef> kernel(entry.pfnCreate(entry.dWidth));
    if (kernel == nullptr) {
        return KEL_ERR_MEMORY;
    }
    Scaler scaler(kernel.get(), &Progress);
    const bool bDone = scaler.Scale(rows(piece.image), unsigned(piece.image->GetWidth()),
                                    unsigned(piece.image->GetHeight()), rows(result),
                                    unsigned(piece.nWidth), unsigned(piece.nHeight));
    piece.image = std::move(result);
    return bDone ? KEL_OK : KEL_ERR_MEMORY;  // a cancelled job's result is never looked at
}

}  // namespace

const tagKelScaleKernel& KernelOf(KelScaleType eType) {
    int nKernels = 0;
    const tagKelScaleKernel* pKernels = GetScaleKernels(&nKernels);
    return *std::find_if(pKernels, pKernels + nKernels - 1,
                         [eType](const tagKelScaleKernel& k) { return k.eType == eType; });
}

KelScaleType KernelAfter(KelScaleType eType) {
    int nKernels = 0;
    const tagKelScaleKernel* pKernels = GetScaleKernels(&nKernels);
    return pKernels[(&KernelOf(eType) - pKernels + 1) % nKernels].eType;
}

KelStatus TakePart(IKelImage& picture, int nX, int nY, int nWidth, int nHeight, Piece& piece) {
    BITMAPINFO* pInfo = picture.GetBitmapInfo();
    piece.image = KelNewImage();
    if (pInfo == nullptr || piece.image == nullptr) {
        return KEL_ERR_MEMORY;
    }
    const auto* pBytes = reinterpret_cast<unsigned char*>(pInfo);
    piece.header.assign(pBytes, pBytes + IMG_GetBitmapInfoSize(&pInfo->bmiHeader));
    pInfo = reinterpret_cast<BITMAPINFO*>(piece.header.data());
    pInfo->bmiHeader.biHeight = nHeight;
    pInfo->bmiHeader.biSizeImage = 0;  // what the rows take
    unsigned char* pRows = picture.GetLineArray()[nY];
    if (nWidth == picture.GetWidth()) {
        return piece.image->OpenAs(pInfo, pRows, 0);
    }
    const KelStatus status = piece.image->Open(pInfo, pRows);
    piece.image->SubImage(nX, 0, nWidth, nHeight);
    return status;
}

KelStatus ScaleQuickly(Piece& piece) {
    piece.image->ZoomImage(piece.nWidth, piece.nHeight);
    return MakeRgb(*piece.image);
}

void ScaleJob::Start(std::vector<Piece> pieces) {
    Cancel();
    m_Pieces = std::move(pieces);
    g_nPercent = 0;
    g_bCancel = false;
    m_Shown = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
    m_Status = std::async(std::launch::async, [this] {
        KelStatus status;
        for (std::size_t i = 0; i < m_Pieces.size() && status; ++i) {
            status = Scale(m_Pieces[i]);
        }
        return status;
    });
}

bool ScaleJob::Cancel() {
    const bool bRunning = m_Status.valid();
    if (bRunning) {
        g_bCancel = true;
        m_Status.get();
    }
    m_Pieces.clear();
    return bRunning;
}

bool ScaleJob::Finish(std::vector<Piece>& pieces, KelStatus& status) {
    if (!m_Status.valid() ||
        m_Status.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
        return false;
    }
    status = m_Status.get();
    pieces = std::move(m_Pieces);
    return true;
}

int ScaleJob::Percent() const {
    return m_Status.valid() && std::chrono::steady_clock::now() > m_Shown ? int(g_nPercent) : -1;
}
