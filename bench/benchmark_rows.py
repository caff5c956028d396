"""The rows of docs/benchmarks.md: which benchmark answers which question, beside which peer, to which mark."""
import dataclasses


@dataclasses.dataclass(frozen=True)
class Row:
    question: str
    program: str
    ours: str  # a benchmark's name, {} standing for the size
    peer: str | None
    sizes: tuple
    what: str  # the size's unit
    bound: str  # what bounds our time, and why where the mark is missed
    mark: float | dict | None = None  # the most our time may be of the peer's, for all sizes or by size
    limit: dict = dataclasses.field(default_factory=dict)  # the most seconds, by size
    growth: str = ""  # why it grows as it does, where that is not plain
    square: bool = False  # sizes are sides of square pictures
    memory: bool = False
    summary_size: int | None = None
    peer_sizes: tuple | None = None  # where the peer takes too long at some
    passes: int = 4  # how often a repetition does at most what is measured, where a limit stands
    once: tuple = ()  # sizes at which our benchmark runs once only, as its name then says

    def ours_at(self, size):
        return self.ours.format(size) + ("/iterations:1" if size in self.once else "")

    def peer_at(self, size):
        return self.peer.format(size) if self.peer and size in (self.peer_sizes or self.sizes) else None

    def mark_at(self, size):
        return self.mark.get(size) if isinstance(self.mark, dict) else self.mark

    def limit_at(self, size):
        return self.limit.get(size)

    def amount(self, size):
        return size * size if self.square else size

    def size_text(self, size):
        if not self.what:
            return ""
        return f"{size} px square" if self.square else f"{size:,} {self.what}".replace(",", " ")


PICTURES = (400, 1265, 4000)  # ten times the pixels each
TRACED = (1000, 4000, 8000)
THOUSANDS = (1000, 10000, 100000)
TO_A_MILLION = (1000, 10000, 100000, 1000000)
MILLION = (10000, 100000, 1000000)
BY_EDGES = {1000: 1.0, 10000: 1 / 3, 100000: 1 / 6}

TRACING = [
    Row(f"outline tracing, 1-bit: {name}", "trace_bench", f"Trace/{kind}/{{}}", f"PeerPotrace/{kind}/{{}}",
        TRACED, "px", bound, mark=0.5, square=True, memory=True)
    for name, kind, bound in [
        ("blobs", "Blobs", "fitting the boundaries; the scan for seeds reads each word once"),
        ("text", "Text", "fitting many short boundaries"),
        ("line art", "LineArt", "walking and fitting long boundaries"),
        ("noise", "Noise", "walking boundaries that turn at every pixel; most are too short to be kept")]
] + [
    Row(f"outline tracing, grey: {name}", "trace_bench", f"Outlines/{kind}/{{}}", f"PeerPotrace/{kind}/{{}}",
        TRACED, "px", bound, mark=0.5, square=True, memory=True)
    for name, kind, bound in [
        ("blobs", "Blobs", "corners and straight edges are looked for, and points placed by the greys, before curves are fitted"),
        ("text", "Text", "the same"),
        ("line art", "LineArt", "the same")]
]

SEGMENTS = [
    Row("curve fitting", "bezier_bench", "FitOutline/{}", "FitOutlinePeer/{}", TO_A_MILLION, "points",
        "projecting each point onto its curve, four at a time", mark=1 / 3),
    Row("flattening a contour set, beside lib2geom", "bezier_bench", "FlattenSet/{}", "FlattenSetPeer/{}",
        MILLION, "segments", "halving: twelve additions and products for three points", mark=1.0),
    Row("flattening a contour set, beside writing its points", "bezier_bench", "FlattenSet/{}",
        "FlattenSetPeerWriting/{}", MILLION, "segments",
        "memory: the points are gathered, then copied into an array of just their size", mark=3.0),
    Row("arc length, default resolution", "bezier_bench", "LengthDefault", "LengthPeerDefault", (1,), "",
        "the same 20 480 chords as below: the rule compares with ten chords, which are not near enough here", mark=1.0),
    Row("arc length, fine resolution", "bezier_bench", "Length", "LengthPeer", (1,), "",
        "the rule asks for 20 480 chords, each with a root and in one order of adding; integrating needs some dozens "
        "of values, but gives other bits", mark=1.0),
    Row("nearest point, exact", "bezier_bench", "NearestPoint", "NearestPointPeer", (1,), "",
        "26 halvings or so of a polygon, each waiting for the one before", mark=1.0),
    Row("nearest point, by scanning", "bezier_bench", "NearestPointByScan", "NearestPointPeer", (1,), "",
        "the rule prescribes 268 points of the curve, in nine rounds that wait for one another", mark=1.0),
]

CLIPPING = []
for label, kind, text in [
        ("rough disc", "RoughDisc", "sorting vertices; the sweep's tree"),
        ("self-crossing 20-gons", "CrossingPolygon", "crossings, found and placed exactly"),
        ("loops", "Loop", "crossings, found and placed exactly"),
        ("grid", "Grid", "crossings, and the contours of the result")]:
    CLIPPING.append(Row(f"clipping, beside polyclipping: {label}", "clip_bench", f"{kind}/{{}}", f"Peer{kind}/{{}}",
                        THOUSANDS, "edges", text, mark=BY_EDGES))
    CLIPPING.append(Row(f"clipping, beside GEOS: {label}", "clip_bench", f"{kind}/{{}}", f"GeosPeer{kind}/{{}}",
                        THOUSANDS, "edges", text, mark=BY_EDGES))
for peer, name in [("polyclipping", "PeerDenseRandom/{}"), ("GEOS", "GeosPeerDenseRandom/{}")]:
    CLIPPING.append(Row(
        f"clipping, beside {peer}: dense random", "clip_bench", "DenseRandom/{}", name, (100, 1000, 10000), "edges",
        "crossings: a third of all pairs of edges cross", limit={10000: 8.0}, mark={1000: 1.0},
        peer_sizes=(100, 1000), passes=1,
        growth="there are n² crossings, and each is a vertex of the result"))

SHAPING = [
    Row(f"shaping: {label}", "shaping_bench", f"{kind}Union/{{}}", f"Peer{kind}Union/{{}}", THOUSANDS, "curves", text,
        mark=mark, peer_sizes=(1000, 10000), once=(100000,), summary_size=10000)
    for label, kind, mark, text in [
        ("smooth", "Wavy", 3.0, "crossings of curves, and the exact sweep over their pieces"),
        ("near-coincident", "NearlySame", 1.0, "long stretches that nearly coincide, which are cut into many pieces"),
        ("circle grids", "DiscGrid", 1.0, "crossings of curves, and putting contours together again")]
]

RASTERS = [
    *[Row(f"thinning, strokes of {width} px", "skeleton_bench", f"Thin/size:{{}}/width:{width}",
          f"ThinPeer/size:{{}}/width:{width}", PICTURES if width == 30 else (4000,), "px",
          "one look at each word, then the shapes' own pixels in order of distance", mark=0.2, square=True)
      for width in (5, 30, 100)],
    Row("region fill and smoothing, with tolerance", "region_bench", "Fill/{}", "PeerFill/{}", PICTURES, "px",
        "the 3 x 3 means; ours also traces the outlines", mark=1.0, square=True),
    Row("region fill and smoothing, exact colour", "region_bench", "Flat/{}", "PeerFlat/{}", PICTURES, "px",
        "reading the picture twice; ours also traces the outlines", mark=1.0, square=True),
    Row("colour reduction, photo-like", "color_bench", "ReducePhoto/{}", "PeerReducePhoto/{}", (200, 632, 2000), "px",
        "the filter, which looks at 25 pixels for each pixel", mark=1.0, square=True),
    Row("colour reduction, flat", "color_bench", "ReduceClipArt/{}", "PeerReduceClipArt/{}", (200, 632, 2000), "px",
        "one look at each pixel, and the filter", mark=0.2, square=True),
    Row("edges", "edges_bench", "Canny/{}", "PeerOpenCvCanny/{}", PICTURES, "px",
        "smoothing and slopes in whole rows; the peer has code for this processor's wider registers", mark=2.0,
        square=True),
    Row("edges as curves", "edges_bench", "Curves/{}", None, PICTURES, "px",
        "placing each point between pixels by the greys around it, smoothed", square=True),
    Row("centre lines, strokes of 5 px", "skeleton_bench", "CentreLines/{}", None, PICTURES, "px",
        "thinning, and following the lines", square=True),
]

SHAPES = [
    Row("break-up of a letter", "breakup_bench", "Letter/{}", None, (316, 1000, 3162), "px",
        "thinning three times, and the bitmap", limit={1000: 0.1}, square=True, summary_size=1000),
    Row("break-up of an ornament", "breakup_bench", "Ornament/{}", None, (632, 2000), "px",
        "junctions, each looked at with its surroundings", square=True),
    Row("a font's glyphs to outlines", "glyph_bench", "Outlines/{}", "PeerOutlines/{}", (10, 100, 1000), "glyphs",
        "each call makes and selects a font and a context, and rounds, raises, frames and places curves, in many small "
        "steps; the peer only hands out the font's points", mark=2.0),
    Row("convex hull", "geometry_bench", "Hull/{}", "PeerHull/{}", TO_A_MILLION, "points",
        "sorting what the first quadrilateral leaves", mark=1.0),
    Row("point in polygon", "geometry_bench", "Contains/{}", "PeerContains/{}", TO_A_MILLION, "points",
        "one pass over the points, several at a time; edges only where the ray is reached", mark=1.0),
    Row("closest point of a polyline", "geometry_bench", "Closest/{}", "PeerClosest/{}", TO_A_MILLION, "points",
        "memory: a box for each segment, and roots only for those near", mark=1.0),
    Row("storing an archive", "archive_bench", "Store/{}", "PeerMemcpy/{}", MILLION, "nodes",
        "new memory, touched for the first time; what fits into the caches is copied twice, to clear paddings",
        mark=1.5),
    Row("loading an archive", "archive_bench", "Load/{}", "PeerMemcpy/{}", MILLION, "nodes",
        "new memory, touched for the first time; in the caches, clearing paddings", mark=1.5),
    Row("offset of a coastline by one side's length", "offset_bench", "OffsetCoastline/{}/1000", None,
        (1500, 15000, 120000), "points", "the sweep that finds where the raw offset crosses itself"),
    Row("offset of a coastline by ten sides' length", "offset_bench", "OffsetCoastline/{}/10000", None,
        (1500, 15000, 120000), "points", "the same; the raw offset crosses itself often"),
    Row("offset of a curve", "offset_bench", "OffsetBezierOutline/{}", None, (10, 100, 1000), "nodes",
        "fitting the offset curves"),
]

ROWS = TRACING + SEGMENTS + CLIPPING + SHAPING + RASTERS + SHAPES
