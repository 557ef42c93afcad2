// The distance texture stores (d / scale + 1) / 2: 0.5 on the outline, less inside.
// Turned back into a distance, it gives the fill, the border and a one-pixel soft edge.
uniform sampler2D DistSampler;
varying vec2 mapCoord;
varying float distScale;
varying float borderWidth;
varying float pixelSize;
varying vec4 insideColor;
varying vec4 borderColor;

void main() {
    float d = (texture2D(DistSampler, mapCoord).a * 2.0 - 1.0) * distScale;
    float outer = 1.0 - smoothstep(-pixelSize, 0.0, d);
    if (outer <= 0.0)
        discard;
    float inBorder = smoothstep(-borderWidth - pixelSize, -borderWidth, d);
    vec4 color = mix(insideColor, borderColor, borderWidth > 0.0 ? inBorder : 0.0);
    gl_FragColor = vec4(color.rgb, color.a * outer);
}
