// A pen's trail: s runs across the strip from 0 to 1, t is what is left of its life.
varying vec2 strip;

void main() {
    strip = gl_MultiTexCoord0.st;
    gl_Position = ftransform();
}
