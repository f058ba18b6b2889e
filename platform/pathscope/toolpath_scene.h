#pragma once

#include "pathscope/camera.h"
#include "pathscope/export.h"
#include "pathscope/toolpaths.h"

#include <qtshared/bounding_box.h>
#include <qtshared/ground.h>
#include <qtshared/material.h>

#include <QColor>
#include <QObject>
#include <QString>

#include <memory>
#include <vector>

namespace pathscope {

class ToolpathViewModel;

/** One line of the legend. */
struct LegendEntry
{
    QColor colour;
    /** Translated, for example "Outer wall", "Extruder 1: Orvane PLA" or "40 to 60 mm/s". */
    QString name;
    Amount amount;
    /** Of the time of all entries, 0 to 1. */
    double share = 0;
};

/** What one tool puts into a print. */
struct ToolTotal
{
    /** As in the legend: "Extruder 1: Orvane PLA". */
    QString name;
    QColor colour;
    /** Of filament. */
    double millimetres = 0;
    /** By the material's usual density, for filament of 1.75 mm; negative when it is not known. */
    double grams = -1;
};

/** A print in a few numbers. */
struct Totals
{
    int layers = 0;
    /**
     * Millimetres from edge to edge of what is printed, without skirts, brims, supports and prime
     * towers; while the file is still read, of all that stands so far, by the middle of the lines.
     */
    double width = 0;
    double depth = 0;
    double height = 0;
    double seconds = 0;
    /** False where the time comes from feed rates alone, which leave acceleration out. */
    bool secondsFromSlicer = false;
    /** Those that extrude anything, by number. */
    std::vector<ToolTotal> tools;
};

/** The printer's side of the scene. */
struct SceneSetting
{
    bool dualExtrusion = false;
    /** One an extruder; may be shorter than the file's tools. */
    std::vector<Orvane::Material> materials;
    /** The same; what is missing, not valid or transparent gets a colour of the scene's own. */
    std::vector<QColor> colours;
    /** Empty when no machine is known: the ground is then laid under the paths. */
    Orvane::BoundingBox buildVolume;
    Orvane::Ground::PlatformShape platformShape = Orvane::Ground::Rectangular;
    Orvane::Ground::DrawFlags drawFlags = Orvane::Ground::DrawBuildVolume;
};

/**
 * Toolpaths, camera and the user's choices put together: what a view has to draw, as numbers.
 *
 * GUI thread only; needs no window and no OpenGL.
 */
class PATHSCOPE_EXPORT ToolpathScene : public QObject
{
    Q_OBJECT

public:
    explicit ToolpathScene(SceneSetting setting, QObject* parent = nullptr);
    ~ToolpathScene() override;

    const SceneSetting& setting() const;
    /** Lives as long as the scene. */
    ToolpathViewModel* viewModel() const;

    /** Never null; without segments before a file was read. */
    std::shared_ptr<const Toolpaths> toolpaths() const;
    /**
     * The next piece of the same file, or another file's paths: those after null (which shows
     * nothing) and after complete ones. Another file is shown from its first layer to its last; the
     * colour mode and the switches stay.
     */
    void setToolpaths(std::shared_ptr<const Toolpaths> toolpaths);

    /** The segments that the layer range and the move slider leave; found in constant time. */
    SegmentRange shownSegments() const;
    /** The part of it that is the top layer. */
    SegmentRange topLayerSegments() const;
    bool isShown(MoveKind kind) const;

    /** Of moves that do not extrude, the same in every colour mode; as 0xAABBGGRR. */
    static std::uint32_t kindColour(MoveKind kind);
    /** One colour a style of the toolpaths, as 0xAABBGGRR (bytes r, g, b, a); ByLayerTime has none:
     * see layerColours(). */
    const std::vector<std::uint32_t>& styleColours() const;
    /** One a layer, only in ByLayerTime; else empty. */
    const std::vector<std::uint32_t>& layerColours() const;
    /** Changes whenever the colours do. */
    int colourRevision() const;

    /**
     * What the colours mean, always in the same order. Where the slicer wrote how long the print
     * takes, times are scaled to it, for feed rates alone promise too little; so the entries add up
     * to what the slicer tells.
     */
    std::vector<LegendEntry> legend() const;
    Totals totals() const;

    const Camera& camera() const;
    void setCamera(const Camera& camera);
    /** What a fit shows: the extruding paths, or the build volume without any. */
    Orvane::BoundingBox fitBox() const;
    /** What near and far planes must enclose. */
    Orvane::BoundingBox worldBox() const;

signals:
    /** More or other paths; colours and ranges have changed too. */
    void toolpathsChanged();
    void cameraChanged();
    /** Anything that a picture shows is different; comes once for each change, after the other
     * signals. */
    void changed();

private:
    class PATHSCOPE_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
};

} // namespace pathscope
