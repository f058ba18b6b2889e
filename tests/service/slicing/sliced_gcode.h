#pragma once

#include <QByteArray>
#include <QString>

#include <limits>
#include <map>
#include <set>
#include <string>
#include <vector>

/** Moves that extrude along a way, or travels, taken together. */
struct SlicedPaths
{
    int moves = 0;
    /** Millimetres on the platform, of filament. */
    double length = 0;
    double filament = 0;
    /** Millimetres a second. */
    double slowest = std::numeric_limits<double>::infinity();
    double fastest = 0;

    void add(double way, double fed, double mmPerSecond);
    void add(const SlicedPaths& others);
};

/** What one height of a print holds; in the order of the file. */
struct SlicedLayer
{
    /** Of the nozzle while it extrudes. */
    double z = 0;
    /** By feature ("External perimeter", as the slicer's comments name them), then by tool. */
    std::map<std::string, std::map<int, SlicedPaths>> features;

    /** Anything but supports, raft, skirt and wipe tower. */
    bool hasModel() const;
    bool has(const std::string& feature) const { return features.count(feature) > 0; }
    std::set<int> tools() const;
};

/**
 * A small reader of sliced G-code for tests, which shares nothing with the readers that it checks.
 *
 * Throws std::runtime_error, with the line, for what no print should hold: a word that is no
 * number, a code that is not known here, an extruding move before the first tool is warm.
 */
struct SlicedGCode
{
    static SlicedGCode read(const QByteArray& text);
    static SlicedGCode readFile(const QString& path);

    /** By the extruder's moves, whatever comments say; start and end code are left out. */
    std::vector<SlicedLayer> layers;
    /** The heights that hold a part of the model. */
    std::vector<double> modelHeights() const;

    /** By feature, and of one tool or of all (-1). */
    SlicedPaths paths(const std::string& feature, int tool = -1) const;
    /** All that extrudes; travels. */
    SlicedPaths extruding;
    SlicedPaths travels;
    std::set<std::string> features() const;
    /** That extrude, start and end code left out. */
    std::set<int> tools() const;
    int toolChanges = 0;

    /** Targets in the order in which they are set, the same again left out. */
    std::map<int, std::vector<double>> toolCelsius;
    std::vector<double> platformCelsius;
    /** Of the fan, 0 to 255; what is set in this order, the same again left out. */
    std::vector<double> fan;

    /** Net filament by tool, in millimetres, start and end code left out. */
    std::map<int, double> filament;
    /** The deepest retraction by tool in millimetres, and the fastest in millimetres a second. */
    std::map<int, double> retraction;
    std::map<int, double> retractionSpeed;
    /** From where to where it extrudes, start and end code left out. */
    double minX = std::numeric_limits<double>::infinity();
    double maxX = -std::numeric_limits<double>::infinity();
    double minY = std::numeric_limits<double>::infinity();
    double maxY = -std::numeric_limits<double>::infinity();
    double maxZ = 0;

    /** By the comments at their beginnings and ends. */
    bool hasStartCode = false;
    bool hasEndCode = false;
    /** How often each code stands there, for example "M109". */
    std::map<std::string, int> codes;
    /** Comments of the form "; name = value", the last one of each name. */
    std::map<std::string, std::string> comments;
};
