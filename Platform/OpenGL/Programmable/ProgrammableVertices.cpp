// Immediate mode: vertices become batches of triangles.

#include "Platform/OpenGL/Programmable/ProgrammableCommands.h"

#include <algorithm>

namespace Imaging::Platform {

using namespace OpenGL;

namespace {

/// Beyond this a batch is drawn, so that its memory stays bounded.
constexpr std::size_t longestBatch = 1u << 15;

} // namespace

bool ProgrammableCommands::isOutsideBegin() {
    if (m_primitive) noteError(Error::InvalidOperation);
    return !m_primitive;
}

void ProgrammableCommands::begin(Primitive primitive) {
    if (!isOutsideBegin()) return;
    m_primitive = primitive;
    m_vertices.clear();
}

void ProgrammableCommands::end() {
    if (!m_primitive) return noteError(Error::InvalidOperation);
    const Primitive primitive = *m_primitive;
    m_primitive.reset();
    const std::array<int, 4>& area = m_state.render.viewport;
    if (area[2] <= 0 || area[3] <= 0) return;
    const LineStyle style{
        m_state.lineWidth, m_state.lineSmooth, {static_cast<float>(area[2]), static_cast<float>(area[3])}};
    const BatchKind kind = primitive == Primitive::Polygon ? BatchKind::Polygons : kindOfLines(style);
    if (kind != m_batch_kind || m_batch.size() > longestBatch) drawBatch();
    m_batch_kind = kind;
    if (kind == BatchKind::Polygons) return appendPolygon(m_vertices, m_batch);
    appendLines(primitive, m_vertices, style, m_batch);
}

void ProgrammableCommands::vertex2f(float x, float y) { vertex3f(x, y, 0); }

void ProgrammableCommands::vertex3f(float x, float y, float z) {
    if (!m_primitive) return; // undefined in OpenGL
    const std::array<double, 4> point = m_matrices.toClipSpace(x, y, z);
    BatchVertex vertex;
    std::transform(point.begin(), point.end(), vertex.position.begin(),
                   [](double value) { return static_cast<float>(value); });
    vertex.color = m_state.color;
    vertex.texCoord = m_state.texCoord;
    m_vertices.push_back(vertex);
}

void ProgrammableCommands::texCoord2f(float s, float t) { m_state.texCoord = {s, t}; }

void ProgrammableCommands::color4f(float red, float green, float blue, float alpha) {
    // Fixed function takes the nearest colour that there is.
    const auto limited = [](float value) { return value > 0 ? std::min(value, 1.0f) : 0.0f; };
    m_state.color = {limited(red), limited(green), limited(blue), limited(alpha)};
}

void ProgrammableCommands::rectf(float x1, float y1, float x2, float y2) {
    if (!isOutsideBegin()) return;
    begin(Primitive::Polygon);
    vertex2f(x1, y1);
    vertex2f(x2, y1);
    vertex2f(x2, y2);
    vertex2f(x1, y2);
    end();
}

} // namespace Imaging::Platform
