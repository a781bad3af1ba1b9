// The picture, which part of it is shown, and what keys and mouse do to it.
#ifndef VIEWER_VIEWER_H
#define VIEWER_VIEWER_H

#include "screen.h"
#include "tracelines.h"

class Viewer {
  public:
    explicit Viewer(Screen& screen);

    void Open(const std::string& strPath);
    bool Handle(const SDL_Event& event);  // false when the program is to end
    void Tick();                          // shows what has changed since the last call

  private:
    void Say(bool bError, const std::vector<std::string>& lines);
    void Fail(const std::string& strWhat, KelStatus status);
    bool Stop();
    void Replace(KelImagePtr picture);
    void Save();
    void Rearrange(SDL_Keycode eKey);
    void Crop();
    void Resize();
    KelStatus TakeVisible(std::vector<Piece>& pieces);
    void Show(const std::vector<Piece>& pieces, const std::string& strForm);

    // In input.cpp.
    void Type(SDL_Keycode eKey, const char* pszText);
    void Key(SDL_Keycode eKey);
    void Zoom(double dFactor, SDL_Point at);
    void Mouse(const SDL_Event& event);

    Screen& m_Screen;
    Overlay m_Overlay;
    TraceLines m_Trace;
    KelImagePtr m_Picture;  // null until the first one opens
    ScaleJob m_Job;         // may borrow the picture's rows, so it ends first
    std::string m_strPath;
    std::string m_strTarget;          // the name typed so far
    SDL_Point m_Start = {0, 0};       // of the dragged frame
    SDL_Rect m_Shown = {0, 0, 0, 0};  // the visible part of the picture
    SDL_Rect m_Place = {0, 0, 0, 0};  // where in the window it is
    bool m_bTyping = false;
    bool m_bFit = true;
    bool m_bCompare = false;
    bool m_bResizing = false;  // the job makes a new picture, not one to show
    bool m_bChanged = true;    // the quick form is due
    bool m_bDraw = true;       // the window is out of date
    Uint32 m_nRestAt = 0;      // when the scaled form is due; 0 when it is not
    KelScaleType m_eKernel = KEL_SCALE_BILINEAR;
    double m_dZoom = 1;         // pixels of the window for one of the picture
    double m_dX = 0, m_dY = 0;  // the picture's point in the middle of the window
};

#endif  // VIEWER_VIEWER_H
