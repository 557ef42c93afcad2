// The visible part of a half plane, drawn in world coordinates.
varying vec2 world;

void main() {
    world = gl_Vertex.xy;
    gl_Position = ftransform();
}
