#include "os/OS.h"

#include <SDL.h>
#include <gtest/gtest.h>

#include <cstdlib>

TEST(OS, ClipboardRoundTripsText) {
    ASSERT_EQ(SDL_Init(SDL_INIT_VIDEO), 0) << SDL_GetError();
    EXPECT_TRUE(os::SetClipboardText("addBox { pos = [1, 2] }\nline two"));
    EXPECT_EQ(os::GetClipboardText(), "addBox { pos = [1, 2] }\nline two");
    EXPECT_TRUE(os::SetClipboardText(""));
    EXPECT_EQ(os::GetClipboardText(), "");
    SDL_Quit();
}

TEST(OS, ErrorPopupWritesToStderrFirstAndAnswersOkWithoutADisplay) {
    // Where no box can show, the report must still reach the user, and the answer is OK.
    EXPECT_EXIT(
        {
            unsetenv("DISPLAY");
            unsetenv("WAYLAND_DISPLAY");
            const bool cancel = os::ShowErrorPopup("Exception caught", "Couldn't load");
            std::exit(cancel ? 3 : 0);
        },
        testing::ExitedWithCode(0), "Exception caught: Couldn't load");
}
