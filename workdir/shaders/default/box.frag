// A filled rectangle with a border, its edges smoothed over one pixel.
uniform float PixelSize;
varying vec2 local;
varying vec2 halfSize;
varying float borderWidth;
varying vec4 insideColor;
varying vec4 borderColor;

void main() {
    vec2 q = abs(local) - halfSize;
    // Signed distance to the outline: negative inside.
    float d = max(q.x, q.y);
    float outer = 1.0 - smoothstep(-PixelSize, 0.0, d);
    if (outer <= 0.0)
        discard;
    float inBorder = smoothstep(-borderWidth - PixelSize, -borderWidth, d);
    vec4 color = mix(insideColor, borderColor, borderWidth > 0.0 ? inBorder : 0.0);
    gl_FragColor = vec4(color.rgb, color.a * outer);
}
