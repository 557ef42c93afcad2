// A disc with a border and the slice of one sixteenth, centred on the circle's own x axis,
// that shows how far it has turned. All edges are smoothed over one pixel.
uniform vec4 InsideColor;
uniform vec4 BorderColor;
uniform float BorderWidth;
uniform float PixelSize;
uniform float Radius;
uniform float SquareScale;
uniform vec4 CakeSlizeColor;
uniform float CakeSize;
varying vec2 local;

const float PI = 3.14159265;

void main() {
    float r = length(local);
    float outer = 1.0 - smoothstep(Radius - PixelSize, Radius, r);
    if (outer <= 0.0)
        discard;
    float angle = abs(atan(local.y, local.x));
    float halfSlice = CakeSize * PI;
    // Across the slice's edges the blend is one pixel wide at this distance.
    float sliceEdge = PixelSize / max(r, PixelSize);
    float inSlice = 1.0 - smoothstep(halfSlice - sliceEdge, halfSlice, angle);
    vec4 inside = mix(InsideColor, CakeSlizeColor, inSlice);
    float inBorder = smoothstep(Radius - BorderWidth - PixelSize, Radius - BorderWidth, r);
    vec4 color = mix(inside, BorderColor, BorderWidth > 0.0 ? inBorder : 0.0);
    gl_FragColor = vec4(color.rgb, color.a * outer);
}
