#pragma once

#include <functional>

#include "core/WindowParams.h"
#include "input/InputListener.h"
#include "script/Attributes.h"
#include "util/CallbackSet.h"
#include "util/Singleton.h"

struct SDL_Window;
struct SDL_Surface;

namespace core {

// Owns the window, the OpenGL context and the frame: Run is the program's only loop. In
// the language it is the object "System". As a listener of the input root it ends the
// program on a quit and follows the window's size.
class Subsystem : public input::InputListener, public util::Singleton<Subsystem> {
public:
    Subsystem();
    ~Subsystem() override;

    // Makes the window and its context, or rebuilds them with new settings. Throws
    // std::runtime_error when the system refuses.
    void CreateWindow(WindowParams params);
    // The loop; returns when the user has quit.
    void Run();
    // Calibration and reset before the first frame.
    void BeginRun();
    // One pass of the loop. Returns false when the program is to end.
    bool RunFrame();

    void SetCaption(const util::String& caption);
    const util::String& GetCaption() const { return m_caption; }

    // The "exit" command: the loop ends at its next exit test, unless the guard refuses.
    void RequestExit();
    // Asked before every exit; the application traps the user with it.
    void SetExitGuard(std::function<bool()> allowed) { m_exitAllowed = std::move(allowed); }
    bool IsExitAllowed() const { return !m_exitAllowed || m_exitAllowed(); }
    bool IsExitRequested() const { return m_exitRequested; }
    // Quit and resize events.
    void OnGeneralEvent(input::InputEvent& event) override;

    float GetMinFPS() const { return m_minFPS->Get(); }
    void SetMinFPS(float fps) { m_minFPS->SetNative(fps); }
    float GetMaxFPS() const { return m_maxFPS->Get(); }
    void SetMaxFPS(float fps) { m_maxFPS->SetNative(fps); }
    // The driver's swap interval is non-zero.
    bool GetVSync() const;
    void SetVSync(bool on);

    // Seconds since SDL started, from the millisecond tick.
    static double GetTime();
    double GetFramesPerSecond() const { return m_framesPerSecond; }
    bool HasWindow() const { return m_window != nullptr; }

    // Saves what the last frame drew as "screenshots/vorra_DATE_NNNN.tga" in the work
    // directory, and gives the file's name.
    util::String TakeScreenshot();

    // The desktop's size; false where it cannot be found (a virtual display reports 0).
    static bool GetDesktopSize(int& width, int& height);

    const WindowParams& GetCurrentWindowParams() const { return m_currentParams; }
    WindowParams& GetRequestedWindowParams() { return m_requestedParams; }
    // Called once after the next GUI update, then emptied.
    util::CallbackSet& GetNextFrameCallbacks() { return m_nextFrameCallbacks; }

private:
    bool ExitTest();
    void MeasureFrameRate(double now);
    void CapFrameRate(float dt);
    void LoadIcon();
    void DestroyWindow();
    // Sets the context's attributes and makes the window with its context; false (with
    // SDL's reason pending) when the system refuses them.
    bool OpenWindow(const WindowParams& params);
    static void SetContextAttributes(const WindowParams& params);
    void RegisterScriptFace();
    void ReleaseGraphicsResources();

    script::AttribPtr<float> m_minFPS;
    script::AttribPtr<float> m_maxFPS;
    script::AttribGetSetPtr<bool> m_vSync;
    bool m_commandsRegistered = false;
    int m_frameCount = 0;
    double m_measuringStart = 0;
    double m_framesPerSecond = 0;
    bool m_exitRequested = false;
    std::function<bool()> m_exitAllowed;
    bool m_screenshotRequested = false;
    WindowParams m_currentParams;
    WindowParams m_requestedParams;
    util::CallbackSet m_nextFrameCallbacks;

    // Mirrors of the requested window settings in the script.
    script::AttribRemotePokerPtr<bool> m_resizable;
    script::AttribRemotePokerPtr<bool> m_fullscreen;
    script::AttribRemotePokerPtr<math::TVector2<int>> m_resolution;
    script::AttribRemotePokerPtr<int> m_antiAlias;
    script::AttribRemotePokerPtr<int> m_depth;

    int m_flushCounter = 0;
    double m_previous = 0;
    util::String m_caption;
    SDL_Window* m_window = nullptr;
    void* m_glContext = nullptr;
    SDL_Surface* m_icon = nullptr;
};

}  // namespace core
