// The trail fades with age and has soft sides one pixel wide.
uniform vec4 Color;
uniform float Width;
uniform float PixelSize;
varying vec2 strip;

void main() {
    float fromSide = (0.5 - abs(strip.s - 0.5)) * Width;
    float edge = smoothstep(0.0, PixelSize, fromSide);
    float life = clamp(strip.t, 0.0, 1.0);
    gl_FragColor = vec4(Color.rgb, Color.a * life * edge);
}
