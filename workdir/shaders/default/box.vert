// Boxes come in batches: each corner arrives placed, with its point in the box's own frame
// (a pixel beyond the box, for the soft edge), the half size and border width, and the
// colours.
varying vec2 local;
varying vec2 halfSize;
varying float borderWidth;
varying vec4 insideColor;
varying vec4 borderColor;

void main() {
    local = gl_MultiTexCoord0.xy;
    halfSize = gl_MultiTexCoord1.xy;
    borderWidth = gl_MultiTexCoord1.z;
    insideColor = gl_Color;
    borderColor = gl_MultiTexCoord2;
    gl_Position = gl_ModelViewProjectionMatrix * gl_Vertex;
}
