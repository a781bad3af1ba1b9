// Draws through SDL2. A texture has the byte order of the library's rows: blue, green, red.
#include "screen.h"

#include "lettering.h"

constexpr int kDot = 2;
constexpr int kLine = (kLetterHeight + 3) * kDot;
constexpr SDL_Color kPlain = {40, 60, 90, 255}, kError = {130, 30, 30, 255};

Screen::Screen() {
    if (SDL_Init(SDL_INIT_VIDEO) == 0) {
        m_pWindow = SDL_CreateWindow("viewer", SDL_WINDOWPOS_UNDEFINED, SDL_WINDOWPOS_UNDEFINED,
                                     1024, 720, SDL_WINDOW_RESIZABLE);
    }
    if (m_pWindow != nullptr) {
        m_pRenderer = SDL_CreateRenderer(m_pWindow, -1, 0);
    }
}

Screen::~Screen() {
    SDL_DestroyRenderer(m_pRenderer);  // and its textures
    SDL_DestroyWindow(m_pWindow);
    SDL_Quit();
}

SDL_Point Screen::Size() const {
    SDL_Point size = {0, 0};
    SDL_GetWindowSize(m_pWindow, &size.x, &size.y);
    return size;
}

void Screen::SetPictures(const std::vector<Piece>& pieces) {
    for (const auto& texture : std::exchange(m_Textures, {})) {
        SDL_DestroyTexture(texture.first);
    }
    for (const Piece& piece : pieces) {
        const int nWidth = piece.image->GetWidth();
        SDL_Texture* pTexture =
            SDL_CreateTexture(m_pRenderer, SDL_PIXELFORMAT_BGR24, SDL_TEXTUREACCESS_STATIC, nWidth,
                              piece.image->GetHeight());
        SDL_UpdateTexture(pTexture, nullptr, piece.image->GetBits(), (nWidth * 24 + 31) / 32 * 4);
        m_Textures.emplace_back(pTexture,
                                SDL_Rect{piece.nX, piece.nY, piece.nWidth, piece.nHeight});
    }
}

void Screen::WriteLine(const SDL_Rect& line, SDL_Color colour, const std::string& strText) {
    SDL_SetRenderDrawColor(m_pRenderer, colour.r, colour.g, colour.b, colour.a);
    SDL_RenderFillRect(m_pRenderer, &line);
    SDL_SetRenderDrawColor(m_pRenderer, 255, 255, 255, 255);
    EachDot(strText, [&](int x, int y) {
        const SDL_Rect dot = {line.x + 6 + x * kDot, line.y + 3 + y * kDot, kDot, kDot};
        SDL_RenderFillRect(m_pRenderer, &dot);
    });
}

void Screen::Draw(const Overlay& overlay) {
    const SDL_Point size = Size();
    SDL_SetRenderDrawColor(m_pRenderer, 48, 48, 48, 255);
    SDL_RenderClear(m_pRenderer);
    for (const auto& texture : m_Textures) {
        SDL_RenderCopy(m_pRenderer, texture.first, nullptr, &texture.second);
    }
    if (overlay.frame.w > 0) {
        SDL_SetRenderDrawColor(m_pRenderer, 255, 220, 0, 255);
        SDL_RenderDrawRect(m_pRenderer, &overlay.frame);
    }
    if (overlay.nPercent >= 0) {
        WriteLine({0, 0, size.x * overlay.nPercent / 100, kLine}, kPlain,
                  std::to_string(overlay.nPercent) + " %   Escape cancels");
    }
    int nY = size.y - kLine * int(overlay.lines.size());
    for (const std::string& strLine : overlay.lines) {
        WriteLine({0, nY, size.x, kLine}, overlay.bError ? kError : kPlain, strLine);
        nY += kLine;
    }
    SDL_RenderPresent(m_pRenderer);
}
