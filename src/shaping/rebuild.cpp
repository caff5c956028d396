// A contour of the result starts at the earliest node of the input that it has, so that what was not
// touched comes back as it was, and what comes out does not depend on where the clipper starts.
#include "shaping/rebuild.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <tuple>
#include <utility>

#include "tarvex/nodes.h"

namespace tarvex::shaping {

namespace {

using Nodes = CArray<BPOINT, BPOINT>;

bool IsForward(const Stretch& s) { return s.from < s.to; }

}  // namespace

class ContourBuilder::Work {
  public:
    Work(const ContourBuilder& builder, std::vector<Stretch> stretches)
        : m_list(builder.m_list),
          m_pieces(builder.m_pieces),
          m_operands(builder.m_operands),
          m_pointLike(builder.m_pointLike),
          m_stretches(std::move(stretches)) {}

    std::unique_ptr<Nodes> Build() {
        if (m_stretches.empty()) return nullptr;
        RestorePointLike();
        StartEarliest();
        if (m_stretches.size() == 1) Halve();
        AppendNodes();
        CloseSeam();
        if (m_nodes.size() < 3) return nullptr;
        auto contour = std::make_unique<Nodes>();
        contour->SetSize(static_cast<int>(m_nodes.size()));
        std::copy(m_nodes.begin(), m_nodes.end(), contour->begin());
        FixBezierCP(*contour);
        return contour;
    }

  private:
    const Nodes& NodesOf(int segment) const {
        const SegmentContour& contour = m_list.ContourOf(segment);
        return (contour.operand == Operand::A ? m_operands.a : m_operands.b)[contour.position];
    }

    /// The input's node at an end of a stretch, as the stretch runs; none inside a segment.
    std::optional<BPOINT> InputNode(const Stretch& s, double t) const {
        if (t != 0 && t != 1) return std::nullopt;
        BPOINT node = NodesOf(s.segment)[m_list[s.segment].index + (t == 0 ? 0 : 1)];
        if (!IsForward(s)) std::swap(node.cp1, node.cp2);
        return node;
    }

    /// Segments without extent have no polyline, so the clipper knows nothing of them; their nodes are put
    /// back between their neighbours.
    void RestorePointLike() {
        if (m_pointLike.empty()) return;
        std::vector<Stretch> all;
        for (std::size_t r = 0; r < m_stretches.size(); ++r) {
            const Stretch& s = m_stretches[r];
            const Stretch& then = m_stretches[(r + 1) % m_stretches.size()];
            all.push_back(s);
            if (IsForward(s) != IsForward(then) || s.to != (IsForward(s) ? 1 : 0)) continue;
            std::vector<Stretch> between;
            int segment = Neighbour(s.segment, IsForward(s));
            while (segment != then.segment && segment != s.segment && IsPointLike(segment)) {
                between.push_back({segment, s.to == 1 ? 0.0 : 1.0, s.to});
                segment = Neighbour(segment, IsForward(s));
            }
            if (segment == then.segment) all.insert(all.end(), between.begin(), between.end());
        }
        m_stretches = std::move(all);
    }

    bool IsPointLike(int segment) const {
        return std::binary_search(m_pointLike.begin(), m_pointLike.end(), segment);
    }

    int Neighbour(int segment, bool isForward) const {
        const SegmentContour& contour = m_list.ContourOf(segment);
        if (isForward) return m_list.Next(segment);
        return segment > contour.first ? segment - 1 : contour.first + contour.count - 1;
    }

    void StartEarliest() {
        using Key = std::tuple<bool, int, int>;
        const auto key = [this](const Stretch& s) -> Key {
            if (s.from != 0 && s.from != 1) return {true, 0, 0};
            const SegmentContour& contour = m_list.ContourOf(s.segment);
            const int node = m_list[s.segment].index + (s.from == 0 ? 0 : 1);
            return {false, m_list[s.segment].contour, node == contour.count ? 0 : node};
        };
        const auto earliest =
            std::min_element(m_stretches.begin(), m_stretches.end(),
                             [&](const Stretch& s, const Stretch& t) { return key(s) < key(t); });
        std::rotate(m_stretches.begin(), earliest, m_stretches.end());
    }

    /// A loop of a single segment would have too few nodes to be a contour.
    void Halve() {
        const Stretch whole = m_stretches.front();
        const double middle = (whole.from + whole.to) / 2;
        m_stretches = {{whole.segment, whole.from, middle}, {whole.segment, middle, whole.to}};
    }

    Cubic CurveOf(const Stretch& s) const {
        const Segment& segment = m_list[s.segment];
        const auto [low, high] = std::minmax(s.from, s.to);
        Cubic c;
        if (low == 0 && high == 1) {
            const Nodes& nodes = NodesOf(s.segment);
            c = SegmentOf(nodes[segment.index], nodes[segment.index + 1]);
        } else {
            c = PieceOf(segment, low, high, PointOn(segment, low), PointOn(segment, high));
        }
        return IsForward(s) ? c : Reversed(c);
    }

    /// The point that all curves share at a crossing.
    DPOINT PointOn(const Segment& segment, double t) const {
        const DPOINT p = PointAt(segment.curve, t);
        const int shared = t == 0 || t == 1 ? -1 : m_pieces.ends.Find(p);
        return shared >= 0 ? m_pieces.ends[shared] : p;
    }

    void AppendNodes() {
        for (const Stretch& s : m_stretches) {
            const Cubic c = CurveOf(s);
            if (m_nodes.empty()) {
                m_nodes.push_back(InputNode(s, s.from).value_or(BPOINT{c.p0, c.p0, c.p0}));
            } else if (!(m_nodes.back().pt == c.p0)) {
                // A gap, where the outline could not be followed.
                m_nodes.back().cp2 = m_nodes.back().pt;
                m_nodes.push_back({c.p0, c.p0, c.p0});
            } else if (const auto node = InputNode(s, s.from); node && !m_endsAtNode) {
                m_nodes.back().flags = node->flags;
            }
            m_nodes.back().cp2 = Plus(c.p1, Minus(m_nodes.back().pt, c.p0));
            const auto node = InputNode(s, s.to);
            m_endsAtNode = node.has_value();
            BPOINT end = node.value_or(BPOINT{c.p3, c.p3, c.p3});
            end.cp1 = c.p2;
            m_nodes.push_back(end);
        }
    }

    void CloseSeam() {
        const Stretch& first = m_stretches.front();
        const Stretch& last = m_stretches.back();
        if (!(m_nodes.back().pt == m_nodes.front().pt)) {
            m_nodes.back().cp2 = m_nodes.back().pt;
            const DPOINT start = m_nodes.front().pt;
            m_nodes.push_back({start, start, start});
            m_nodes.front().cp1 = start;
            return;
        }
        const SegmentContour& contour = m_list.ContourOf(first.segment);
        const int start = contour.first;
        const int end = contour.first + contour.count - 1;
        const bool isOldSeam =
            (first.from == 0 && first.segment == start && last.to == 1 && last.segment == end) ||
            (first.from == 1 && first.segment == end && last.to == 0 && last.segment == start);
        if (isOldSeam) return;  // with the outer handles that it had
        m_nodes.front().cp1 = m_nodes.back().cp1;
        m_nodes.back().cp2 = m_nodes.front().cp2;
    }

    const SegmentList& m_list;
    const PieceList& m_pieces;
    const Operands& m_operands;
    const std::vector<int>& m_pointLike;
    std::vector<Stretch> m_stretches;
    std::vector<BPOINT> m_nodes;
    bool m_endsAtNode = false;
};

ContourBuilder::ContourBuilder(const SegmentList& list, const PieceList& pieces, const Operands& operands)
    : m_list(list), m_pieces(pieces), m_operands(operands) {
    for (const Piece& piece : pieces.pieces) {
        if (piece.course < 0 && piece.from == 0 && piece.to == 1) m_pointLike.push_back(piece.segment);
    }
}

std::unique_ptr<CArray<BPOINT, BPOINT>> ContourBuilder::Build(std::vector<Stretch> stretches) const {
    return Work(*this, std::move(stretches)).Build();
}

}  // namespace tarvex::shaping
