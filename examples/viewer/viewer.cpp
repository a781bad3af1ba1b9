// A change shows the quick form of the picture at once, and the scaled form when the hand rests.
#include "viewer.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "safesave.h"

constexpr Uint32 kRest = 150;  // milliseconds

Viewer::Viewer(Screen& screen) : m_Screen(screen) {
    SDL_StopTextInput();
    Say(false, {"Drop a picture here. H lists the keys."});
}

void Viewer::Say(bool bError, const std::vector<std::string>& lines) {
    const auto nColumns = std::size_t(std::max(m_Screen.Size().x / 12 - 1, 20));
    m_bDraw = true;
    m_Overlay.bError = bError;
    m_Overlay.lines.clear();
    for (const std::string& strLine : lines) {
        for (std::size_t i = 0; i < strLine.size(); i += nColumns) {
            m_Overlay.lines.push_back(strLine.substr(i, nColumns));
        }
    }
}

void Viewer::Fail(const std::string& strWhat, KelStatus status) {
    std::vector<std::string> lines = m_Trace.Take();
    lines.insert(lines.begin(), {"cannot " + strWhat, status.ToString()});
    Say(true, lines);
}

bool Viewer::Stop() {
    m_bResizing = false;
    return m_Job.Cancel();
}

void Viewer::Open(const std::string& strPath) {
    KelImagePtr picture = KelNewImage();
    m_Trace.Take();
    KelStatus status = picture ? picture->Open(strPath.c_str()) : KEL_ERR_MEMORY;
    if (status && picture->GetLineArray() == nullptr) {
        status = KEL_ERR_OPEN_FORMAT;  // recognised, but not read
    }
    if (!status) {
        return Fail("open " + strPath, status);
    }
    Say(false, {});
    m_strPath = strPath;
    Replace(std::move(picture));
}

void Viewer::Replace(KelImagePtr picture) {
    Stop();  // the job may borrow the old picture's rows
    m_Picture = std::move(picture);
    m_bFit = m_bChanged = true;
}

void Viewer::Save() {
    m_Trace.Take();
    const KelStatus status = SafeSave(*m_Picture, m_strTarget, FormatOfName(m_strTarget), nullptr);
    status ? Say(false, {"saved " + m_strTarget}) : Fail("save " + m_strTarget, status);
}

void Viewer::Rearrange(SDL_Keycode eKey) {
    Stop();
    if (eKey == SDLK_f || eKey == SDLK_r) {
        m_Picture->Mirror(0);
    }
    bool bDone = eKey == SDLK_f || m_Picture->Rotate(0);
    if (eKey == SDLK_m && bDone) {
        m_Picture->Mirror(0);
        bDone = m_Picture->Rotate(0);
    }
    if (!bDone) {
        Fail("transpose", KEL_ERR_MEMORY);
    }
    m_bFit = m_bChanged = true;
}

void Viewer::Crop() {
    const SDL_Rect frame = std::exchange(m_Overlay.frame, {0, 0, 0, 0});
    const auto source = [this](int n) { return int(std::floor(n / m_dZoom)); };
    SDL_Rect area = {m_Shown.x + source(frame.x - m_Place.x),
                     m_Shown.y + source(frame.y - m_Place.y), source(frame.w), source(frame.h)};
    const SDL_Rect whole = {0, 0, m_Picture->GetWidth(), m_Picture->GetHeight()};
    if (!m_bCompare && SDL_IntersectRect(&area, &whole, &area)) {
        Stop();
        m_Picture->SubImage(area.x, area.y, area.w, area.h);
        m_bFit = m_bChanged = true;
    }
}

void Viewer::Resize() {
    std::vector<Piece> pieces(1);
    const int nWidth = m_Picture->GetWidth(), nHeight = m_Picture->GetHeight();
    const KelStatus status = TakePart(*m_Picture, 0, 0, nWidth, nHeight, pieces[0]);
    if (!status) {
        return Fail("resize", status);
    }
    pieces[0].nWidth = std::max(int(nWidth * m_dZoom + 0.5), 1);
    pieces[0].nHeight = std::max(int(nHeight * m_dZoom + 0.5), 1);
    pieces[0].eKernel = m_eKernel;
    m_nRestAt = 0;
    m_Job.Start(std::move(pieces));
    m_bResizing = true;
}

// The visible part, once for each kernel that is shown.
KelStatus Viewer::TakeVisible(std::vector<Piece>& pieces) {
    const SDL_Point size = m_Screen.Size();
    const int nCells = m_bCompare ? 2 : 1, nWide = size.x / nCells, nHigh = size.y / nCells;
    const int nWidth = m_Picture->GetWidth(), nHeight = m_Picture->GetHeight();
    if (m_bFit) {
        m_dZoom = std::min(double(nWide) / nWidth, double(nHigh) / nHeight);
    }
    const auto range = [this](double& dMiddle, int nAll, int nRoom, int& nFirst, int& nCount) {
        dMiddle = m_bFit ? nAll / 2.0 : std::clamp(dMiddle, 0.0, double(nAll));
        nCount = std::clamp(int(std::ceil(nRoom / m_dZoom)), 1, nAll);
        nFirst = std::clamp(int(std::lround(dMiddle - nCount / 2.0)), 0, nAll - nCount);
        return std::clamp(int(nCount * m_dZoom + 0.5), 1, nRoom);
    };
    m_Place.w = range(m_dX, nWidth, nWide, m_Shown.x, m_Shown.w);
    m_Place.h = range(m_dY, nHeight, nHigh, m_Shown.y, m_Shown.h);
    m_Place.x = (nWide - m_Place.w) / 2;
    m_Place.y = (nHigh - m_Place.h) / 2;
    pieces = std::vector<Piece>(std::size_t(nCells * nCells));
    KelStatus status;
    for (int i = 0; i < nCells * nCells && status; ++i) {
        Piece& piece = pieces[std::size_t(i)];
        piece.nX = m_Place.x + i % 2 * nWide;
        piece.nY = m_Place.y + i / 2 * nHigh;
        piece.nWidth = m_Place.w;
        piece.nHeight = m_Place.h;
        piece.eKernel = m_bCompare ? KelScaleType(KEL_SCALE_BILINEAR + i) : m_eKernel;
        status = TakePart(*m_Picture, m_Shown.x, m_Shown.y, m_Shown.w, m_Shown.h, piece);
    }
    return status;
}

void Viewer::Show(const std::vector<Piece>& pieces, const std::string& strForm) {
    m_bDraw = true;
    m_Screen.SetPictures(pieces);
    m_Screen.SetTitle(m_strPath.substr(m_strPath.rfind('/') + 1) + " - " +
                      std::to_string(m_Picture->GetWidth()) + " x " +
                      std::to_string(m_Picture->GetHeight()) + ", " +
                      std::to_string(m_Picture->GetBitsPerPixel()) + " bits, " +
                      std::to_string(int(m_dZoom * 100 + 0.5)) + " %, " + strForm);
}

void Viewer::Tick() {
    std::vector<Piece> pieces;
    KelStatus status;
    if (m_Picture != nullptr && !m_bResizing && std::exchange(m_bChanged, false)) {
        Stop();
        m_nRestAt = SDL_GetTicks() + kRest;
        status = TakeVisible(pieces);
        for (std::size_t i = 0; i < pieces.size() && status; ++i) {
            status = ScaleQuickly(pieces[i]);
        }
        status ? Show(pieces, "quick") : Fail("show the picture", status);
    } else if (m_nRestAt != 0 && SDL_GetTicks() >= m_nRestAt) {
        m_nRestAt = 0;
        status = TakeVisible(pieces);
        status ? m_Job.Start(std::move(pieces)) : Fail("scale", status);
    } else if (m_Job.Finish(pieces, status)) {
        if (!status) {
            m_bResizing = false;
            Fail("scale", status);
        } else if (m_bResizing) {
            Replace(std::move(pieces[0].image));
        } else {
            Show(pieces, m_bCompare ? "four kernels" : KernelOf(m_eKernel).pszName);
        }
    }
    if (std::exchange(m_Overlay.nPercent, m_Job.Percent()) != m_Overlay.nPercent || m_bDraw) {
        m_Screen.Draw(m_Overlay);
    }
    m_bDraw = m_bChanged;
}
