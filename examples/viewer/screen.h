// The window: pictures as textures, and what is drawn over them.
#ifndef VIEWER_SCREEN_H
#define VIEWER_SCREEN_H

#include <SDL.h>

#include <string>
#include <utility>
#include <vector>

#include "scalejob.h"

// What is drawn over the pictures.
struct Overlay {
    std::vector<std::string> lines;  // a message at the bottom
    bool bError = false;             // the message tells of a failure
    SDL_Rect frame = {0, 0, 0, 0};   // a rectangle that is being dragged
    int nPercent = -1;               // progress; none when negative
};

class Screen {
  public:
    Screen();
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    bool IsOpen() const { return m_pRenderer != nullptr; }
    SDL_Point Size() const;
    void SetTitle(const std::string& strTitle) { SDL_SetWindowTitle(m_pWindow, strTitle.c_str()); }

    // Shows 24-bit pictures at their places. Their rows go to the renderer as they lie.
    void SetPictures(const std::vector<Piece>& pieces);

    void Draw(const Overlay& overlay);

  private:
    void WriteLine(const SDL_Rect& line, SDL_Color colour, const std::string& strText);

    SDL_Window* m_pWindow = nullptr;
    SDL_Renderer* m_pRenderer = nullptr;
    std::vector<std::pair<SDL_Texture*, SDL_Rect>> m_Textures;
};

#endif  // VIEWER_SCREEN_H
