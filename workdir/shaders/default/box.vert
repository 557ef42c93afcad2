// A box is drawn as the quad from (-1, -1) to (1, 1), grown here to its half size and a
// pixel of margin for the soft edge.
uniform vec2 HalfSize;
uniform float PixelSize;
varying vec2 local;

void main() {
    local = gl_Vertex.xy * (HalfSize + vec2(PixelSize));
    gl_Position = gl_ModelViewProjectionMatrix * vec4(local, 0.0, 1.0);
}
