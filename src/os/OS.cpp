#include "os/OS.h"

#include <SDL.h>

#include <iostream>

#include "logging/Log.h"

namespace os {

bool ShowErrorPopup(const util::String& title, const util::String& text) {
    std::cerr << title << ": " << text << std::endl;
    Log(logging::Error, title + ": " + text);

    const util::String message = text + "\nPress cancel to debug";
    enum { kOk = 0, kCancel = 1 };
    const SDL_MessageBoxButtonData buttons[] = {
        {SDL_MESSAGEBOX_BUTTON_RETURNKEY_DEFAULT, kOk, "OK"},
        {SDL_MESSAGEBOX_BUTTON_ESCAPEKEY_DEFAULT, kCancel, "Cancel"},
    };
    const SDL_MessageBoxData box = {
        SDL_MESSAGEBOX_INFORMATION, nullptr, title.c_str(), message.c_str(),
        SDL_arraysize(buttons),     buttons, nullptr,
    };
    int pressed = kOk;
    if (SDL_ShowMessageBox(&box, &pressed) != 0) {
        return false;
    }
    return pressed == kCancel;
}

bool SetClipboardText(const util::String& text) {
    return SDL_SetClipboardText(text.c_str()) == 0;
}

util::String GetClipboardText() {
    if (!SDL_HasClipboardText()) {
        return util::String();
    }
    char* text = SDL_GetClipboardText();
    if (!text) {
        return util::String();
    }
    util::String result(text);
    SDL_free(text);
    return result;
}

}  // namespace os
