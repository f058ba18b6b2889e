#pragma once

#include "window_operation.h"

#include <trovek-ui/trovekqt.h>

#include <QTemporaryDir>

#include <vector>

namespace trovek {

/** Every fault at every operation of some windows, as test data and as the test of one of them. */
class FaultTable
{
public:
    explicit FaultTable(std::vector<WindowOperation> operations);

    void addRows() const;
    /** The current row. */
    void runRow();

private:
    const std::vector<WindowOperation> m_operations;
    const QTemporaryDir m_temporary;
    /** One for the process, as in a host: the export mover keeps the first that it is given. */
    TrovekQt m_facade;
};

} // namespace trovek
