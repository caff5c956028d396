// Tracing one-pixel-wide lines in a matrix of cells: counting what leaves a cell, marking anchors, walking
// from anchor to anchor.
#pragma once

#include <optional>
#include <vector>

#include "tarvex/containers.h"
#include "tarvex/matrices.h"
#include "tarvex/platform.h"
#include "tarvex/raster.h"

namespace tarvex {

/// How many of the eight neighbours are not 0; 0 when the cell itself is.
int CountNeighbours(const CByteMatrix& mat, int x, int y);
/// How many are `value`.
int CountNeighbours(const CByteMatrix& mat, int x, int y, unsigned char value);

/// How many neighbours are not 0 and have, in the ring behind them, a cell that is not 0 either; 0 when
/// the cell itself is 0.
int CountBranches(const CByteMatrix& mat, int x, int y);
/// The same with `value` in the place of what is not 0, except for the cell itself.
int CountBranches(const CByteMatrix& mat, int x, int y, unsigned char value);

/// The neighbours where they are at most 2, else the branches.
int CountPaths(const CByteMatrix& mat, int x, int y);
/// The neighbours of `value` where they are below 2, else the branches.
int CountPaths(const CByteMatrix& mat, int x, int y, unsigned char value);

/// One step of a walk that marks cells (see CImgProc::TraceLinePoint).
bool StepAlongLine(CByteMatrix& mat, int& x, int& y);

/// Walks from every line there is and marks anchors and visited cells.
void MarkAnchors(CByteMatrix& mat);

/// The first line cell in row order whose CountPaths for line cells is `paths`.
std::optional<POINT> FindLineCell(const CByteMatrix& mat, int paths);
/// The first anchor in row order that a line is still to be walked from.
std::optional<POINT> FindOpenAnchor(const CByteMatrix& mat);

/// Walks the line next to an anchor and returns its points; none when the cell is not an anchor.
std::vector<POINT> WalkFromAnchor(CByteMatrix& mat, int x, int y);

/// Empties `lines` and walks the lines of all anchors into it, no more than `maxLines` unless that is 0.
void WalkAllAnchors(CByteMatrix& mat, CPolyPolyPoint& lines, int maxLines);

}  // namespace tarvex
