// The screen quad over the summed particle field.
varying vec2 fieldCoord;

void main() {
    fieldCoord = gl_MultiTexCoord0.st;
    gl_Position = ftransform();
}
