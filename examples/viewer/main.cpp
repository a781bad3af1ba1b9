// viewer: shows a picture in a window.
//
//   viewer [PICTURE]
//
// A picture may also be dropped onto the window. H lists the keys.
#include <cstdio>

#include "viewer.h"

int main(int nCount, char** ppArguments) {
    Screen screen;
    if (!screen.IsOpen()) {
        std::fprintf(stderr, "viewer: no window: %s\n", SDL_GetError());
        return 1;
    }
    Viewer viewer(screen);
    if (nCount > 1) {
        viewer.Open(ppArguments[1]);
    }
    for (bool bGoOn = true; bGoOn; viewer.Tick()) {
        SDL_Event event;
        for (int n = SDL_WaitEventTimeout(&event, 20); n != 0 && bGoOn; n = SDL_PollEvent(&event)) {
            bGoOn = viewer.Handle(event);
        }
    }
    return 0;
}
