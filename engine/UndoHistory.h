// UndoHistory: groups the cell changes of one user gesture into steps that undo and redo as one.
#pragma once

#include "engine/Layer.h"

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace engine {

/// Every change records the cells it is about to touch; the open step keeps each cell's first
/// before-state, so a gesture that touches a cell many times still undoes to where it began.
class UndoHistory {
public:
    static constexpr std::size_t kDefaultMaxSteps = 100;

    explicit UndoHistory(std::size_t maxSteps = kDefaultMaxSteps);

    /// Saves the cell's current state into the open step, opening one if needed; a cell already
    /// in the open step keeps its earlier before-state.
    void recordBefore(Layer& layer, CellKey key);
    /// Saves the before-state of every cell the layer has.
    void recordAllCells(Layer& layer);
    /// recordAllCells followed by emptying the layer, without a copy: the cells themselves move
    /// into the open step (or back to the layer's spares where the step holds a state already).
    void takeAllCells(Layer& layer);
    /// Readies a cell for a change that writes all of it. Where the open step has no state for
    /// it yet, the layer's cell moves into the step as its before-state and a cell of undefined
    /// bytes takes its place; otherwise the cell is changed in place (one of undefined bytes
    /// where there is none).
    CellWrite replaceCell(Layer& layer, CellKey key);
    /// Saves a number the document keeps beside its layers (the canvas's sides) into the open
    /// step, which undo and redo then set back and forth with the cells; a number already in the
    /// open step keeps its earlier value. The number must outlive the history.
    void recordValue(int& value);
    bool hasOpenStep() const;
    /// Closes the open step. A step that changed nothing is dropped; one that did is pushed and
    /// drops every redo step. Returns whether a step was pushed.
    bool closeStep();
    /// Closes the open step, then undoes the last step. False when there is nothing to undo.
    bool undo();
    /// Closes the open step, then redoes the last undone step. False when there is nothing to redo.
    bool redo();

    std::size_t undoDepth() const;
    std::size_t redoDepth() const;

private:
    struct Entry {
        Layer* layer = nullptr;
        CellKey key;
        // Held apart from the entry, so that a cell the step made costs no memory for its state.
        CellPtr before;
        CellPtr after;
    };
    struct ValueEntry {
        int* value = nullptr;
        int before = 0;
        int after = 0;
    };
    struct Step {
        std::map<std::pair<int, CellKey>, Entry> cells;
        std::vector<ValueEntry> values;
    };

    static bool changedSinceBefore(const Step& step);
    /// Hands a dropped step's cells back to their layers for reuse.
    static void recycle(Step& step);

    std::size_t m_maxSteps;
    std::optional<Step> m_open;
    std::deque<Step> m_undo;
    std::vector<Step> m_redo;
};

} // namespace engine
