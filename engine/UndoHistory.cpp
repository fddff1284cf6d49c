// UndoHistory: groups the cell changes of one user gesture into steps that undo and redo as one.
#include "engine/UndoHistory.h"

#include <algorithm>
#include <utility>

namespace engine {

namespace {

bool isTransparent(const CellPixels& cell)
{
    static const CellPixels kTransparent {};
    return cell == kTransparent;
}

} // namespace

UndoHistory::UndoHistory(std::size_t maxSteps) : m_maxSteps(std::max<std::size_t>(maxSteps, 1)) {}

void UndoHistory::recordBefore(Layer& layer, CellKey key)
{
    if (!m_open)
        m_open.emplace();
    auto [it, inserted] = m_open->cells.try_emplace({ layer.id(), key });
    if (!inserted)
        return;
    it->second.layer = &layer;
    it->second.key = key;
    it->second.before = layer.copyOf(key);
}

void UndoHistory::recordAllCells(Layer& layer)
{
    for (const auto& [key, cell] : layer.cells())
        recordBefore(layer, key);
}

void UndoHistory::takeAllCells(Layer& layer)
{
    if (!m_open)
        m_open.emplace();
    for (auto& [key, cell] : layer.takeAll()) {
        auto [it, inserted] = m_open->cells.try_emplace({ layer.id(), key });
        if (!inserted) {
            layer.recycle(std::move(cell));
            continue;
        }
        it->second.layer = &layer;
        it->second.key = key;
        it->second.before = std::move(cell);
    }
}

CellWrite UndoHistory::replaceCell(Layer& layer, CellKey key)
{
    if (!m_open)
        m_open.emplace();
    auto [it, inserted] = m_open->cells.try_emplace({ layer.id(), key });
    if (!inserted) {
        if (CellPixels* cell = layer.find(key))
            return { cell, cell };
        return { &layer.install(key), nullptr };
    }
    it->second.layer = &layer;
    it->second.key = key;
    it->second.before = layer.exchange(key, nullptr);
    return { &layer.install(key), it->second.before.get() };
}

void UndoHistory::recordValue(int& value)
{
    if (!m_open)
        m_open.emplace();
    for (const ValueEntry& entry : m_open->values) {
        if (entry.value == &value)
            return;
    }
    m_open->values.push_back({ &value, value, value });
}

bool UndoHistory::hasOpenStep() const { return m_open.has_value(); }

// A missing cell and a transparent one look the same, so a step that only created empty cells
// changed nothing the user could undo.
bool UndoHistory::changedSinceBefore(const Step& step)
{
    for (const ValueEntry& entry : step.values) {
        if (*entry.value != entry.before)
            return true;
    }
    for (const auto& [id, entry] : step.cells) {
        const CellPixels* now = entry.layer->find(entry.key);
        const bool same = entry.before ? (now ? *now == *entry.before : isTransparent(*entry.before))
                                       : (!now || isTransparent(*now));
        if (!same)
            return true;
    }
    return false;
}

void UndoHistory::recycle(Step& step)
{
    for (auto& [id, entry] : step.cells) {
        entry.layer->recycle(std::move(entry.before));
        entry.layer->recycle(std::move(entry.after));
    }
}

bool UndoHistory::closeStep()
{
    if (!m_open)
        return false;
    Step step = std::move(*m_open);
    m_open.reset();
    // The after-states are taken when the step is undone: nothing can redo it before that.
    if (!changedSinceBefore(step)) {
        recycle(step);
        return false;
    }
    for (Step& dropped : m_redo)
        recycle(dropped);
    m_redo.clear();
    m_undo.push_back(std::move(step));
    if (m_undo.size() > m_maxSteps) {
        recycle(m_undo.front());
        m_undo.pop_front();
    }
    return true;
}

bool UndoHistory::undo()
{
    closeStep();
    if (m_undo.empty())
        return false;
    Step step = std::move(m_undo.back());
    m_undo.pop_back();
    // The cells as they are now (they may have been written in place since the step closed) are
    // what redo puts back; states change places with the layer's cells, nothing is copied.
    for (auto& [id, entry] : step.cells)
        entry.after = entry.layer->exchange(entry.key, std::move(entry.before));
    for (ValueEntry& entry : step.values)
        entry.after = std::exchange(*entry.value, entry.before);
    m_redo.push_back(std::move(step));
    return true;
}

bool UndoHistory::redo()
{
    closeStep();
    if (m_redo.empty())
        return false;
    Step step = std::move(m_redo.back());
    m_redo.pop_back();
    for (auto& [id, entry] : step.cells)
        entry.before = entry.layer->exchange(entry.key, std::move(entry.after));
    for (ValueEntry& entry : step.values)
        entry.before = std::exchange(*entry.value, entry.after);
    m_undo.push_back(std::move(step));
    return true;
}

std::size_t UndoHistory::undoDepth() const { return m_undo.size(); }

std::size_t UndoHistory::redoDepth() const { return m_redo.size(); }

} // namespace engine
