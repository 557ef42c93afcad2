// Water is wherever the summed blobs reach the cut-off: one colour inside, nothing outside,
// with an edge one screen pixel soft so that the outline does not shimmer.
uniform sampler2D Field;
uniform float Cutoff;
uniform vec4 Color;
varying vec2 fieldCoord;

void main() {
    float sum = texture2D(Field, fieldCoord).a;
    float soft = max(fwidth(sum), 0.0001);
    float inside = smoothstep(Cutoff - soft, Cutoff + soft, sum);
    if (inside <= 0.0)
        discard;
    gl_FragColor = vec4(Color.rgb, Color.a * inside);
}
