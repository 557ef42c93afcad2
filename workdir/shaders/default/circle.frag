// A disc with a border and the slice of one sixteenth, centred on the circle's own x axis,
// that shows how far it has turned; the slice takes the border's colour. All edges are
// smoothed over one pixel.
uniform float PixelSize;
uniform float CakeSize;
varying vec2 local;
varying float radius;
varying float borderWidth;
varying vec4 insideColor;
varying vec4 borderColor;

const float PI = 3.14159265;

void main() {
    float r = length(local);
    float outer = 1.0 - smoothstep(radius - PixelSize, radius, r);
    if (outer <= 0.0)
        discard;
    float angle = abs(atan(local.y, local.x));
    float halfSlice = CakeSize * PI;
    // Across the slice's edges the blend is one pixel wide at this distance.
    float sliceEdge = PixelSize / max(r, PixelSize);
    float inSlice = 1.0 - smoothstep(halfSlice - sliceEdge, halfSlice, angle);
    vec4 inside = mix(insideColor, borderColor, inSlice);
    float inBorder = smoothstep(radius - borderWidth - PixelSize, radius - borderWidth, r);
    vec4 color = mix(inside, borderColor, borderWidth > 0.0 ? inBorder : 0.0);
    gl_FragColor = vec4(color.rgb, color.a * outer);
}
