#pragma once

#include "pathscope/export.h"

#include <QListWidget>

#include <vector>

namespace pathscope {

struct LegendEntry;

/**
 * What each colour means, with the time and the filament it takes and its share of the time.
 *
 * As high as its entries up to a dozen, and scrolls what is more.
 */
class PATHSCOPE_EXPORT LegendList : public QListWidget
{
    Q_OBJECT

public:
    explicit LegendList(QWidget* parent = nullptr);

    void setEntries(const std::vector<LegendEntry>& entries);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void changeEvent(QEvent* event) override;

private:
    int heightOf(int rows) const;
};

} // namespace pathscope
