// A circle is drawn as the quad from (-1, -1) to (1, 1), grown here to the radius with a
// margin (SquareScale) for the soft edge. The fragment stage measures from the centre.
uniform float Radius;
uniform float SquareScale;
varying vec2 local;

void main() {
    local = gl_Vertex.xy * Radius * SquareScale;
    gl_Position = gl_ModelViewProjectionMatrix * vec4(local, 0.0, 1.0);
}
