#pragma once

#include <cstdint>
#include <string>

namespace rendering {

// What the rendering code knows of the OpenGL context it runs in, and the resource
// settings that change how it uploads. The window owns the context and reports its life
// here; the settings mirror the script's resource object, which lives above this library.
class GraphicsContext {
public:
    // A context is current and GLEW's entry points are loaded for it.
    static bool IsLoaded() { return s_loaded; }
    // Counts the contexts made so far: an object made in an older context must not free
    // its name in the present one, where the same number may mean something else.
    static uint32_t GetGeneration() { return s_generation; }
    // The window made a context current: its entry points are loaded. Gives why the
    // context cannot be used, or nothing.
    static std::string ContextCreated();
    static void ContextLost();

    // Textures are uploaded in 16-bit formats.
    static bool GetForce16BitTextures() { return s_force16BitTextures; }
    static void SetForce16BitTextures(bool on) { s_force16BitTextures = on; }
    // Shader programs may be built; off, every shader request gives the fixed pipeline.
    static bool GetShadersEnabled() { return s_shadersEnabled; }
    static void SetShadersEnabled(bool on) { s_shadersEnabled = on; }

    // More than one texture unit.
    static bool HasMultiTexturing();
    // Constant-colour blending, which see-through polygons and water need without shaders.
    static bool HasImaging();
    // GL_CLAMP_TO_EDGE or, on the oldest drivers, GL_CLAMP.
    static bool HasBorderClamp();

private:
    static inline bool s_loaded = false;
    static inline uint32_t s_generation = 0;
    static inline bool s_force16BitTextures = false;
    static inline bool s_shadersEnabled = false;
};

}  // namespace rendering
