#include "core/Subsystem.h"

#include <GL/glew.h>
#include <SDL.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <stdexcept>

#include "core/ResourceManager.h"
#include "core/Updatable.h"
#include "gui/GUI.h"
#include "gui/LookAndFeel.h"
#include "input/Input.h"
#include "logging/FileLogger.h"
#include "logging/Logger.h"
#include "logging/StreamLogger.h"
#include "physics/Simulation.h"
#include "rendering/GraphicsContext.h"
#include "rendering/ImageManager.h"
#include "rendering/Renderer.h"
#include "rendering/ShaderManager.h"
#include "rendering/TextureManager.h"
#include "script/Parser.h"
#include "script/ValueConversions.h"
#include "util/Clock.h"
#include "util/FileSystem.h"
#include "util/LexicalCast.h"
#include "util/Profiler.h"
#include "util/Profiler2.h"
#include "util/Version.h"

namespace core {
namespace {

constexpr int kLargestWindowSide = 4096;
// Below this nothing of the interface fits; a saved size of 0 must not come back as a
// window of one pixel at every start.
constexpr int kSmallestWindowWidth = 320;
constexpr int kSmallestWindowHeight = 240;

double SdlSeconds() {
    return SDL_GetTicks() / 1000.0;
}

[[noreturn]] void ThrowSdlError(const util::String& message) {
    VORRA_THROW(std::runtime_error, message + SDL_GetError());
}

void SetGlAttribute(SDL_GLattr attribute, int value, const char* message) {
    if (SDL_GL_SetAttribute(attribute, value) != 0) {
        VORRA_THROW(std::runtime_error, message);
    }
}

// Settings that a context is made with; a change of any of them needs a new window.
bool SameContextSettings(const WindowParams& a, const WindowParams& b) {
    return a.colourDepth == b.colourDepth && a.zDepth == b.zDepth &&
           a.stencilDepth == b.stencilDepth && a.antiAliasSamples == b.antiAliasSamples;
}

}  // namespace

Subsystem::Subsystem() : input::InputListener("System") {
    AddAttrib(m_minFPS, "minFPS", 10.0f);
    AddAttrib(m_maxFPS, "maxFPS", 60.0f);
    AddAttrib(m_vSync, "vSync", &Subsystem::GetVSync, &Subsystem::SetVSync, false);
    m_measuringStart = SdlSeconds();

    logging::Logger& logger = logging::Logger::Get();
    logger.Add(new logging::StreamLogger(7, &std::cerr));
    logger.Add(new logging::StreamLogger(16, &std::cout));
    const util::String logPath = util::FileSystem::Get().GetWorkDirectory() + "Logfile.txt";
    logger.Add(new logging::FileLogger(31, logPath, util::FileSystem::Get().Exists(logPath)));

    Log(logging::Debug, "Init SDL...");
    if (SDL_Init(SDL_INIT_TIMER | SDL_INIT_VIDEO | SDL_INIT_JOYSTICK | SDL_INIT_NOPARACHUTE) < 0) {
        ThrowSdlError("Couldn't init SDL: ");
    }
    util::Clock::SetSource(&SdlSeconds);
    input::Input::Get().Start();
    input::Input::Get().Add(input::InputListenerWeakPtr(this));

    LoadIcon();
    RegisterScriptFace();
}

void Subsystem::RegisterScriptFace() {
    AddMemberCmd("exit", &Subsystem::RequestExit);
    AddCommand("time", []() -> script::ObjectPtr { return script::ValueToObject(GetTime()); });
    AddCommand("objectCurrent", []() -> script::ObjectPtr {
        return script::ValueToObject(static_cast<int>(util::LivePointeeCount()));
    });
    AddCommand("objectHandleCurrent", []() -> script::ObjectPtr {
        return script::ValueToObject(static_cast<int>(util::PointeeHandleCount()));
    });
    // Kept for scripts that read it; nothing counts it.
    AddCommand("objectTotal", []() -> script::ObjectPtr { return script::ValueToObject(0); });
    AddAttrib(m_resizable, "resizable", &m_requestedParams.resizable);
    AddAttrib(m_fullscreen, "fullscreen", &m_requestedParams.fullscreen);
    AddAttrib(m_resolution, "resolution", &m_requestedParams.resolution);
    AddAttrib(m_antiAlias, "antiAlias", &m_requestedParams.antiAliasSamples);
    AddAttrib(m_depth, "depth", &m_requestedParams.colourDepth);
    AddCommand("recreateWindow", [this]() { CreateWindow(m_requestedParams); });
}

Subsystem::~Subsystem() {
    // Graphics objects go while their context is still there to free them in.
    rendering::Renderer::Release();
    input::Input::Release();
    gui::GUI::Release();
    gui::LookAndFeel::Release();
    rendering::TextureManager::Release();
    rendering::ShaderManager::Release();
    rendering::ImageManager::Release();
    util::FileSystem::Release();
    DestroyWindow();
    if (m_icon) {
        SDL_FreeSurface(m_icon);
    }
    util::Clock::SetSource(nullptr);
    SDL_Quit();
}

void Subsystem::LoadIcon() {
    const util::String path = util::FileSystem::WorkDirectoryOrCurrent() + "Vorra.bmp";
    SDL_RWops* file = SDL_RWFromFile(path.c_str(), "rb");
    m_icon = file ? SDL_LoadBMP_RW(file, 1) : nullptr;
    if (!m_icon) {
        Log(logging::Warning,
            "Couldn't load the window icon \"" + path + "\": " + util::String(SDL_GetError()));
    }
}

bool Subsystem::GetDesktopSize(int& width, int& height) {
    SDL_DisplayMode mode;
    if (SDL_GetDesktopDisplayMode(0, &mode) != 0 || mode.w <= 0 || mode.h <= 0) {
        return false;
    }
    width = mode.w;
    height = mode.h;
    return true;
}

void Subsystem::SetCaption(const util::String& caption) {
    m_caption = caption;
    if (m_window) {
        SDL_SetWindowTitle(m_window, m_caption.c_str());
    }
}

void Subsystem::DestroyWindow() {
    rendering::GraphicsContext::ContextLost();
    if (m_glContext) {
        SDL_GL_DeleteContext(m_glContext);
        m_glContext = nullptr;
    }
    if (m_window) {
        SDL_DestroyWindow(m_window);
        m_window = nullptr;
    }
}

void Subsystem::SetContextAttributes(const WindowParams& params) {
    SetGlAttribute(SDL_GL_BUFFER_SIZE, params.colourDepth, "Couldn't set buffer depth");
    if (params.colourDepth == 32) {
        SetGlAttribute(SDL_GL_RED_SIZE, 8, "Couldn't set buffer red depth");
        SetGlAttribute(SDL_GL_GREEN_SIZE, 8, "Couldn't set buffer green depth");
        SetGlAttribute(SDL_GL_BLUE_SIZE, 8, "Couldn't set buffer blue depth");
        SetGlAttribute(SDL_GL_ALPHA_SIZE, 8, "Couldn't set buffer alpha depth");
    }
    SetGlAttribute(SDL_GL_DEPTH_SIZE, params.zDepth, "Couldn't set z-buffer depth");
    // SDL keeps attributes from one window to the next: a setting turned off is written
    // as off, or the last window's stencil and anti-aliasing would stay.
    SetGlAttribute(SDL_GL_STENCIL_SIZE, params.stencilDepth, "Couldn't set stencil-buffer depth");
    const bool antiAliased = params.antiAliasSamples > 1;
    SetGlAttribute(SDL_GL_MULTISAMPLEBUFFERS, antiAliased ? 1 : 0, "Couldn't set the AA buffer");
    SetGlAttribute(SDL_GL_MULTISAMPLESAMPLES, antiAliased ? params.antiAliasSamples : 0,
                   "Couldn't set the AA samples");
}

bool Subsystem::OpenWindow(const WindowParams& params) {
    SetContextAttributes(params);
    Uint32 flags = SDL_WINDOW_OPENGL;
    if (params.fullscreen) {
        flags |= SDL_WINDOW_FULLSCREEN;
    }
    if (params.resizable) {
        flags |= SDL_WINDOW_RESIZABLE;
    }
    if (!params.framed) {
        flags |= SDL_WINDOW_BORDERLESS;
    }
    m_window = SDL_CreateWindow(m_caption.c_str(), SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED,
                                params.resolution.x, params.resolution.y, flags);
    m_glContext = m_window ? SDL_GL_CreateContext(m_window) : nullptr;
    if (!m_glContext) {
        DestroyWindow();
        return false;
    }
    if (m_icon) {
        SDL_SetWindowIcon(m_window, m_icon);
    }
    return true;
}

void Subsystem::CreateWindow(WindowParams params) {
    Log(logging::Info, "Creating window...");
    ReleaseGraphicsResources();

    if (params.resolution.x < kSmallestWindowWidth || params.resolution.y < kSmallestWindowHeight) {
        Log(logging::Warning, "A window of " + std::to_string(params.resolution.x) + " by " +
                                  std::to_string(params.resolution.y) +
                                  " is too small to use; it is made at least " +
                                  std::to_string(kSmallestWindowWidth) + " by " +
                                  std::to_string(kSmallestWindowHeight));
    }
    params.resolution.x = std::clamp(params.resolution.x, kSmallestWindowWidth, kLargestWindowSide);
    params.resolution.y =
        std::clamp(params.resolution.y, kSmallestWindowHeight, kLargestWindowSide);
    int desktopWidth = 0;
    int desktopHeight = 0;
    if (GetDesktopSize(desktopWidth, desktopHeight)) {
        params.resolution.x = std::min(params.resolution.x, desktopWidth);
        params.resolution.y = std::min(params.resolution.y, desktopHeight);
    }

    Log(logging::Debug, "Setting up SDL");
    Log(logging::Debug, "Setting video mode");
    const bool freshContext = !m_window || !SameContextSettings(params, m_currentParams);
    if (freshContext) {
        const bool hadWindow = m_window != nullptr;
        DestroyWindow();
        if (!OpenWindow(params)) {
            // Settings the system refuses (an anti-aliasing it lacks) must not leave the
            // user without a window: the one that worked comes back.
            const util::String error = SDL_GetError();
            if (!hadWindow) {
                VORRA_THROW(std::runtime_error, "Couldn't set video mode, SDL-error: " + error);
            }
            Log(logging::Error, "Couldn't set video mode, SDL-error: " + error +
                                    "; the window keeps its previous settings");
            params = m_currentParams;
            if (!OpenWindow(params)) {
                ThrowSdlError("Couldn't set video mode, SDL-error: ");
            }
        }
    } else {
        // Same context settings: the window changes in place, so a resize by the user does
        // not make the window vanish and reappear.
        SDL_SetWindowFullscreen(m_window, params.fullscreen ? SDL_WINDOW_FULLSCREEN : 0);
        SDL_SetWindowResizable(m_window, params.resizable ? SDL_TRUE : SDL_FALSE);
        SDL_SetWindowBordered(m_window, params.framed ? SDL_TRUE : SDL_FALSE);
        SDL_SetWindowSize(m_window, params.resolution.x, params.resolution.y);
    }

    if (freshContext) {
        Log(logging::Debug, "Init GLEW...");
        const std::string glewError = rendering::GraphicsContext::ContextCreated();
        if (!glewError.empty()) {
            VORRA_THROW(std::runtime_error, "GLEW Error: " + util::String(glewError));
        }
    }

    Log(logging::Debug, "Setting vsync");
    SDL_GL_SetSwapInterval(params.vSync ? 1 : 0);
    params.vSync = SDL_GL_GetSwapInterval() != 0;

    m_currentParams = params;
    m_requestedParams = params;

    Log(logging::Debug, "Setting viewport");
    glViewport(0, 0, params.resolution.x, params.resolution.y);
    rendering::Renderer::Get().ForgetState();

    Log(logging::Debug, "Checking for alpha framebuffer");
    int alphaBits = 0;
    if (SDL_GL_GetAttribute(SDL_GL_ALPHA_SIZE, &alphaBits) != 0) {
        VORRA_THROW(std::runtime_error, "You'r computer won't let me query the alpha bit depth");
    }
    if (alphaBits != 8) {
        Log(logging::Warning,
            "Your computer doesn't support alpha framebuffers; water may not be rendered "
            "correctly.");
    }

    Log(logging::Debug, "Loading all resources...");
    if (ResourceManager::IsAlive()) {
        ResourceManager::Get().LoadAll(false);
    }
    Log(logging::Debug, "Done loading resources.");
    gui::GUI& gui = gui::GUI::Get();
    gui.SetFullscreen(m_currentParams.fullscreen);
    gui.OnResize(m_currentParams.resolution.x, m_currentParams.resolution.y);
    if (!m_commandsRegistered) {
        // The picture is taken after the next frame is drawn, not from whatever the back
        // buffer holds when the command runs.
        AddCommand("screenshot", [this]() { m_screenshotRequested = true; });
        m_commandsRegistered = true;
    }
    Log(logging::Info, "Window created.");
}

void Subsystem::RequestExit() {
    if (IsExitAllowed()) {
        m_exitRequested = true;
    }
}

void Subsystem::OnGeneralEvent(input::InputEvent& event) {
    if (event.kind == input::InputEvent::Kind::Quit) {
        // A trapped user's quit stays unconsumed, for whoever else listens.
        if (IsExitAllowed()) {
            RequestExit();
            event.consumed = true;
        }
    } else if (event.kind == input::InputEvent::Kind::Resized) {
        WindowParams params = m_currentParams;
        params.resolution.x = event.width;
        params.resolution.y = event.height;
        if (params.resolution.x != m_currentParams.resolution.x ||
            params.resolution.y != m_currentParams.resolution.y) {
            CreateWindow(params);
        }
        event.consumed = true;
    }
}

bool Subsystem::GetVSync() const {
    return m_window && SDL_GL_GetSwapInterval() != 0;
}

void Subsystem::SetVSync(bool on) {
    if (m_window) {
        SDL_GL_SetSwapInterval(on ? 1 : 0);
        m_currentParams.vSync = GetVSync();
    }
}

double Subsystem::GetTime() {
    return SdlSeconds();
}

bool Subsystem::ExitTest() {
    if (!m_exitRequested) {
        return false;
    }
    ReleaseGraphicsResources();
    return true;
}

void Subsystem::ReleaseGraphicsResources() {
    if (ResourceManager::IsAlive()) {
        ResourceManager::Get().UnloadAll();
    }
}

util::String Subsystem::TakeScreenshot() {
    m_screenshotRequested = false;
    return rendering::Renderer::Get().SaveScreenshot(util::FileSystem::Get().GetWorkDirectory() +
                                                     "screenshots/vorra");
}

void Subsystem::MeasureFrameRate(double now) {
    ++m_frameCount;
    const double elapsed = now - m_measuringStart;
    if (m_framesPerSecond == 0 && elapsed > 0) {
        m_framesPerSecond = m_frameCount / elapsed;
    }
    if (elapsed > 1) {
        m_framesPerSecond = m_frameCount / elapsed;
        m_measuringStart = now;
        m_frameCount = 0;
    }
}

void Subsystem::CapFrameRate(float dt) {
    // Through the attribute, so that the script sees the clamp.
    const float maxFPS = GetMaxFPS();
    SetMaxFPS(maxFPS >= 1 ? maxFPS : 1);
    const float frameTime = 1 / GetMaxFPS();
    if (dt < frameTime) {
        SDL_Delay(static_cast<Uint32>(std::round((frameTime - dt) * 1000 + 0.5f)));
    }
}

void Subsystem::BeginRun() {
    const Uint32 beforeSleep = SDL_GetTicks();
    SDL_Delay(1);
    const double sleepPrecision = SDL_GetTicks() - beforeSleep;
    const Uint32 beforeTick = SDL_GetTicks();
    Uint32 tick = beforeTick;
    while (tick == beforeTick) {
        tick = SDL_GetTicks();
    }
    const double timerPrecision = tick - beforeTick;
    Log(logging::Debug,
        "sleep precision=" + util::LexicalCast<util::String>(sleepPrecision) +
            "ms, timer precision: " + util::LexicalCast<util::String>(timerPrecision) + "ms");

    // Events of the start-up are delivered and the input state starts afresh. Then the
    // scopes opened so far (configuration, scripts, that poll) are thrown away, so that the
    // tree holds the frame's own stages.
    input::Input::Get().Poll();
    input::Input::Get().Reset();
    util::Profiler::Get().Reset();
    Log(logging::Debug, "Entering game loop");
    m_flushCounter = 0;
    m_previous = SdlSeconds();
}

void Subsystem::Run() {
    BeginRun();
    while (RunFrame()) {
    }
}

bool Subsystem::RunFrame() {
    if (ExitTest()) {
        return false;
    }
    {
        VORRA_PROFILE("Events");
        input::Input::Get().Poll();
    }
    // A frame's stepping may take as long as a frame at the lowest rate: 1 / 0 is no bound.
    physics::Simulation::Get().SetMaxUpdateSeconds(1.0f / GetMinFPS());
    if (ExitTest()) {
        return false;
    }

    const double now = SdlSeconds();
    if (++m_flushCounter >= 11) {
        VORRA_PROFILE("FlushCallbackSets");
        util::AbstractCallbackSet::FlushAll();
        m_flushCounter = 0;
    }
    {
        VORRA_PROFILE("GC");
        util::SweepHandles();
    }
    {
        VORRA_PROFILE("Parser::Update");
        script::Parser::Get().Update();
    }
    const float dt = static_cast<float>(now - m_previous);
    {
        VORRA_PROFILE("Interp::Update");
        for (Updatable* updatable : util::ClassTracker<Updatable>::Snapshot()) {
            updatable->Update(dt);
        }
    }
    {
        // The simulation steps inside: the application is the GUI's first component.
        VORRA_PROFILE("GUI::Update");
        gui::GUI::Get().Update(dt);
    }
    m_nextFrameCallbacks.CallAll();
    m_nextFrameCallbacks.Clear();
    if (ExitTest()) {
        return false;
    }

    {
        VORRA_PROFILE("Draw");
        // A frame starts from the sky's colour, wherever the application leaves it bare.
        glClearColor(0.55f, 0.7f, 0.9f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        gui::GUI::Get().Draw();
    }
    if (m_screenshotRequested) {
        TakeScreenshot();
    }
    {
        VORRA_PROFILE("SDL_GL_SwapBuffers");
        if (m_window) {
            SDL_GL_SwapWindow(m_window);
        }
    }
    MeasureFrameRate(now);

    util::Profiler::Get().SetFramesPerSecond(m_framesPerSecond);
    util::Profiler::Get().Update();
    util::Profiler2::Get().Update(dt);
    {
        VORRA_PROFILE("Logger::Update");
        logging::Logger::Get().Update();
    }
    CapFrameRate(dt);
    m_previous = now;
    return true;
}

}  // namespace core
