#pragma once

#include "rendering/AbstractImage.h"

namespace rendering {

// One float a pixel, uploaded as alpha: distance maps and other computed fields.
class ImageFloat : public TImage<float> {
public:
    using TImage<float>::TImage;

    bool HasAlpha() const override { return true; }
    unsigned int GetFormat() const override;
    unsigned int GetType() const override;
};

using ImageFloatPtr = util::SharedPtr<ImageFloat>;

}  // namespace rendering
