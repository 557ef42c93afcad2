#include "app/BackgroundSettings.h"

namespace app {

BackgroundSettings::BackgroundSettings(script::Reflected& owner) {
    owner.AddAttrib(skyColor, "skyColor", math::Colour(0.3f, 0.4f, 1.0f, 1.0f));
    owner.AddAttrib(cloudOpacity, "cloudOpacity", 0.9f);
    owner.AddAttrib(drawClouds, "drawClouds", true);
}

HeadlessBackground::HeadlessBackground()
    : script::Reflected("Background"), BackgroundSettings(static_cast<script::Reflected&>(*this)) {}

HeadlessBackground::~HeadlessBackground() = default;

}  // namespace app
