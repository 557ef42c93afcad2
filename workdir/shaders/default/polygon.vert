// Polygons come in batches: each corner of the polygon's box arrives placed, with its point
// on the distance texture, the texture's scale, the border width and the pixel size, and the
// colours.
varying vec2 mapCoord;
varying float distScale;
varying float borderWidth;
varying float pixelSize;
varying vec4 insideColor;
varying vec4 borderColor;

void main() {
    mapCoord = gl_MultiTexCoord0.st;
    distScale = gl_MultiTexCoord1.x;
    borderWidth = gl_MultiTexCoord1.y;
    pixelSize = gl_MultiTexCoord1.z;
    insideColor = gl_Color;
    borderColor = gl_MultiTexCoord2;
    gl_Position = gl_ModelViewProjectionMatrix * gl_Vertex;
}
