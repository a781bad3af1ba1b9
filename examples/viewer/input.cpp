// What keys and mouse do.
#include <algorithm>
#include <cstdlib>

#include "viewer.h"

const std::vector<std::string> kHelp = {
    "wheel, + and -: zoom   drag: pan   0: fit   1: one to one   drag right button: crop",
    "F: flip   M: mirror   T: transpose   R: 90 degrees   Z: resize to this zoom",
    "B: next kernel   C: compare the kernels   S: save as   Q: quit   Escape: cancel"};

bool Viewer::Handle(const SDL_Event& event) {
    const bool bKey = event.type == SDL_KEYDOWN;
    if (event.type == SDL_QUIT || (bKey && !m_bTyping && event.key.keysym.sym == SDLK_q)) {
        return false;
    }
    if (event.type == SDL_DROPFILE) {
        Open(event.drop.file);
        SDL_free(event.drop.file);
    } else if (event.type == SDL_WINDOWEVENT &&
               event.window.event == SDL_WINDOWEVENT_SIZE_CHANGED) {
        m_bChanged = true;
    } else if (m_bTyping && (bKey || event.type == SDL_TEXTINPUT)) {
        Type(bKey ? event.key.keysym.sym : 0, bKey ? "" : event.text.text);
    } else if (bKey) {
        Key(event.key.keysym.sym);
    } else if (m_Picture != nullptr) {
        Mouse(event);
    }
    m_bDraw = true;
    return true;
}

void Viewer::Type(SDL_Keycode eKey, const char* pszText) {
    m_strTarget += pszText;
    if (eKey == SDLK_BACKSPACE && !m_strTarget.empty()) {
        m_strTarget.pop_back();
    }
    m_bTyping = eKey != SDLK_RETURN && eKey != SDLK_ESCAPE;
    if (m_bTyping) {
        return Say(false, {"save as (.bmp, .jpg, .png): " + m_strTarget + "_"});
    }
    SDL_StopTextInput();
    eKey == SDLK_RETURN ? Save() : Say(false, {});
}

void Viewer::Key(SDL_Keycode eKey) {
    Say(false, {eKey == SDLK_ESCAPE && Stop() ? "cancelled" : ""});
    const int nHalves = m_bCompare ? 4 : 2;  // of the window, or of one of its four cells
    const SDL_Point middle = {m_Screen.Size().x / nHalves, m_Screen.Size().y / nHalves};
    if (eKey == SDLK_h) {
        Say(false, kHelp);
    } else if (m_Picture == nullptr) {
        return;
    } else if (eKey == SDLK_f || eKey == SDLK_m || eKey == SDLK_t || eKey == SDLK_r) {
        Rearrange(eKey);
    } else if (eKey == SDLK_PLUS || eKey == SDLK_EQUALS || eKey == SDLK_MINUS) {
        Zoom(eKey == SDLK_MINUS ? 0.8 : 1.25, middle);
    } else if (eKey == SDLK_1) {
        Zoom(1 / m_dZoom, middle);
    } else if (eKey == SDLK_0) {
        m_bFit = m_bChanged = true;
    } else if (eKey == SDLK_b) {
        m_eKernel = KernelAfter(m_eKernel);
        m_bChanged = true;
    } else if (eKey == SDLK_c) {
        m_bCompare = !m_bCompare;
        m_bChanged = true;
        Say(false, {m_bCompare ? "above: bilinear, box   below: gaussian, hamming" : ""});
    } else if (eKey == SDLK_z) {
        Resize();
    } else if (eKey == SDLK_s) {
        m_strTarget = m_strPath.substr(0, m_strPath.rfind('/') + 1);
        SDL_StartTextInput();
        Type(0, "");
    }
}

void Viewer::Zoom(double dFactor, SDL_Point at) {
    const int nCells = m_bCompare ? 2 : 1;
    const int nWide = m_Screen.Size().x / nCells, nHigh = m_Screen.Size().y / nCells;
    const double dOld = m_dZoom;
    m_dZoom = std::clamp(m_dZoom * dFactor, 0.01, 32.0);
    // The point under the mouse stays there.
    m_dX += (at.x % nWide - nWide / 2) * (1 / dOld - 1 / m_dZoom);
    m_dY += (at.y % nHigh - nHigh / 2) * (1 / dOld - 1 / m_dZoom);
    m_bFit = false;
    m_bChanged = true;
}

void Viewer::Mouse(const SDL_Event& event) {
    SDL_Rect& frame = m_Overlay.frame;
    if (event.type == SDL_MOUSEWHEEL) {
        SDL_Point at;
        SDL_GetMouseState(&at.x, &at.y);
        Zoom(event.wheel.y > 0 ? 1.25 : 0.8, at);
    } else if (event.type == SDL_MOUSEMOTION && (event.motion.state & SDL_BUTTON_LMASK) != 0) {
        m_dX -= event.motion.xrel / m_dZoom;
        m_dY -= event.motion.yrel / m_dZoom;
        m_bFit = false;
        m_bChanged = true;
    } else if (event.type == SDL_MOUSEBUTTONDOWN && event.button.button == SDL_BUTTON_RIGHT) {
        m_Start = {event.button.x, event.button.y};
    } else if (event.type == SDL_MOUSEMOTION && (event.motion.state & SDL_BUTTON_RMASK) != 0) {
        frame = {std::min(m_Start.x, event.motion.x), std::min(m_Start.y, event.motion.y),
                 std::abs(event.motion.x - m_Start.x), std::abs(event.motion.y - m_Start.y)};
    } else if (event.type == SDL_MOUSEBUTTONUP && event.button.button == SDL_BUTTON_RIGHT) {
        Crop();
    }
}
