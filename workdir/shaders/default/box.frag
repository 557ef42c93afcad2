// A filled rectangle with a border, its edges smoothed over one pixel.
uniform vec4 InsideColor;
uniform vec4 BorderColor;
uniform float BorderWidth;
uniform float PixelSize;
uniform vec2 HalfSize;
varying vec2 local;

void main() {
    vec2 q = abs(local) - HalfSize;
    // Signed distance to the outline: negative inside.
    float d = max(q.x, q.y);
    float outer = 1.0 - smoothstep(-PixelSize, 0.0, d);
    if (outer <= 0.0)
        discard;
    float inBorder = smoothstep(-BorderWidth - PixelSize, -BorderWidth, d);
    vec4 color = mix(InsideColor, BorderColor, BorderWidth > 0.0 ? inBorder : 0.0);
    gl_FragColor = vec4(color.rgb, color.a * outer);
}
