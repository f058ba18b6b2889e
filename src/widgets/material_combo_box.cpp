#include "trovek-ui/material_combo_box.h"

#include <QVector>

namespace trovek {

namespace {

struct Suitability
{
    QVector<int> disabledRows;
    int currentRow;
};

Suitability suitabilityFor(Printer::Type type)
{
    switch (type) {
    case Printer::FabrinoDual:
    case Printer::Fabrino2X:
        return {{Orvane::Flexible}, Orvane::ABS};
    case Printer::Fabrino2:
        return {{Orvane::ABS, Orvane::Dissolvable}, Orvane::PLA};
    case Printer::FabrinoSingle:
    case Printer::CubioSingle:
    case Printer::CubioDual:
        return {{Orvane::Dissolvable, Orvane::Flexible}, Orvane::ABS};
    case Printer::UnknownType:
        break;
    }
    return {{}, Orvane::ABS};
}

} // namespace

MaterialComboBox::MaterialComboBox(QWidget* parent)
    : QComboBox(parent)
{
    addMaterials();
    connect(this, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &MaterialComboBox::indexChanged);
}

MaterialComboBox::~MaterialComboBox() = default;

Orvane::Material MaterialComboBox::material() const
{
    const int index = currentIndex();
    return index >= 0 && index < Orvane::kMaterialCount ? static_cast<Orvane::Material>(index)
                                                        : Orvane::UnknownMaterial;
}

bool MaterialComboBox::isUsable(Orvane::Material material) const
{
    return (model()->index(material, modelColumn()).flags() & Qt::ItemIsEnabled) != 0;
}

void MaterialComboBox::select(Orvane::Material material)
{
    setCurrentIndex(material >= 0 && material < Orvane::kMaterialCount ? material : -1);
}

void MaterialComboBox::indexChanged(int index)
{
    emit materialChanged(static_cast<Orvane::Material>(index));
}

void MaterialComboBox::sanitizeForBot(Printer::Type printer)
{
    clear();
    addMaterials();

    const Suitability suitability = suitabilityFor(printer);
    // Below the user's roles an item keeps its flags; none of them leaves it grey and unselectable.
    constexpr int kFlagsRole = Qt::UserRole - 1;
    for (const int row : suitability.disabledRows)
        setItemData(row, 0, kFlagsRole);
    setCurrentIndex(suitability.currentRow);
}

void MaterialComboBox::addMaterials()
{
    for (int i = 0; i < Orvane::kMaterialCount; ++i)
        addItem(Orvane::materialToHumanString(static_cast<Orvane::Material>(i)));
}

} // namespace trovek
