#pragma once

#include "tools/moradmin/picture/pencil.h"

#include <string>
#include <vector>

/// How entities look, by what their own records hold. Each answers false when there is nothing that
/// could be drawn.
namespace mor::tool {

// Lines and curves.
bool drawLine(Pencil& pen);
bool drawRay(Pencil& pen);  ///< XLINE too
bool drawPoint(Pencil& pen);
bool drawCircle(Pencil& pen);
bool drawArc(Pencil& pen);
bool drawEllipse(Pencil& pen);
bool drawSpline(Pencil& pen);
bool drawLightPolyline(Pencil& pen);
bool drawPolyline(Pencil& pen);  ///< of old style, meshes too
bool drawMultiline(Pencil& pen);

// Faces.
bool drawSolid(Pencil& pen);  ///< TRACE too
bool drawFace(Pencil& pen);
bool drawMesh(Pencil& pen);
/// The faces behind an old-style polyline.
bool drawOldMesh(Pencil& pen);

bool drawHatch(Pencil& pen);
/// The edges of a region or a solid, where the record holds them as text.
bool drawBody(Pencil& pen);

// Texts.
bool drawText(Pencil& pen);  ///< ATTRIB and ATTDEF too
bool drawLongText(Pencil& pen);
bool drawTolerance(Pencil& pen);

// What points at things.
bool drawLeader(Pencil& pen);
bool drawMultileader(Pencil& pen);
/// A dimension that has no block: its lines, and its text as it is measured.
bool drawDimension(Pencil& pen);
// Frames of what lies in other files, and what hides.
bool drawImage(Pencil& pen);
bool drawWipeout(Pencil& pen);
bool drawUnderlay(Pencil& pen);
bool drawOleFrame(Pencil& pen);
/// A frame with the name of a shape, whose form lies in another file.
bool drawShape(Pencil& pen);

/// The preview that a record keeps for programs that do not know its kind.
bool drawPreview(Pencil& pen);

/// The points of a spline's record along its curve; empty when it has no usable ones.
[[nodiscard]] std::vector<Point> splinePoints(int degree, const std::vector<double>& knots,
                                              const std::vector<Point>& controls,
                                              const std::vector<double>& weights);
/// A smooth curve through points.
[[nodiscard]] std::vector<Point> curveThrough(const std::vector<Point>& given, bool closed);
/// The same turn between none and a whole one.
[[nodiscard]] double turnTo(double turn, double whole);
[[nodiscard]] double radians(double degrees);
/// Goes on with an arc to `to`, of the bulge that stands at `from`; both in the plane of `axes`,
/// which the pencil's placement carries on.
void bulgeTo(Path& path, const Pencil& pen, const Vertex& from, const Point& to,
             const host::PlaneAxes& axes);

}  // namespace mor::tool
