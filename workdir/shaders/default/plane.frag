// A half plane: the side where dot(p, Normal) is below Offset, with a border strip along
// its edge.
uniform vec4 InsideColor;
uniform vec4 BorderColor;
uniform float BorderWidth;
uniform float PixelSize;
uniform vec2 Normal;
uniform float Offset;
varying vec2 world;

void main() {
    float d = dot(world, Normal) - Offset;
    float outer = 1.0 - smoothstep(-PixelSize, 0.0, d);
    if (outer <= 0.0)
        discard;
    float inBorder = smoothstep(-BorderWidth - PixelSize, -BorderWidth, d);
    vec4 color = mix(InsideColor, BorderColor, BorderWidth > 0.0 ? inBorder : 0.0);
    gl_FragColor = vec4(color.rgb, color.a * outer);
}
