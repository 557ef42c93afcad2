// Circles come in batches: each corner of a square somewhat larger than the disc arrives
// placed, with its point in the circle's own frame, the radius and border width, and the
// colours. The fragment stage measures from the centre.
varying vec2 local;
varying float radius;
varying float borderWidth;
varying vec4 insideColor;
varying vec4 borderColor;

void main() {
    local = gl_MultiTexCoord0.xy;
    radius = gl_MultiTexCoord1.x;
    borderWidth = gl_MultiTexCoord1.y;
    insideColor = gl_Color;
    borderColor = gl_MultiTexCoord2;
    gl_Position = gl_ModelViewProjectionMatrix * gl_Vertex;
}
