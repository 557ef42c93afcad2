// The polygon's map box; the texture holds its distance field.
varying vec2 mapCoord;

void main() {
    mapCoord = gl_MultiTexCoord0.st;
    gl_Position = ftransform();
}
