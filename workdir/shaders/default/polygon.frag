// The distance texture stores (d / DistScale + 1) / 2: 0.5 on the outline, less inside.
// Turned back into a distance, it gives the fill, the border and a one-pixel soft edge.
uniform sampler2D DistSampler;
uniform float DistScale;
uniform vec4 InsideColor;
uniform vec4 BorderColor;
uniform float BorderWidth;
uniform float PixelSize;
varying vec2 mapCoord;

void main() {
    float d = (texture2D(DistSampler, mapCoord).a * 2.0 - 1.0) * DistScale;
    float outer = 1.0 - smoothstep(-PixelSize, 0.0, d);
    if (outer <= 0.0)
        discard;
    float inBorder = smoothstep(-BorderWidth - PixelSize, -BorderWidth, d);
    vec4 color = mix(InsideColor, BorderColor, BorderWidth > 0.0 ? inBorder : 0.0);
    gl_FragColor = vec4(color.rgb, color.a * outer);
}
