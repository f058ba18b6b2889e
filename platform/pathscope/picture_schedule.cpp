#include "picture_schedule.h"

#include <algorithm>

namespace pathscope {

void PictureSchedule::invalidate()
{
    m_picture.valid = false;
    for (Picture& checkpoint : m_checkpoints)
        checkpoint.valid = false;
    m_shown = Outdated;
}

void PictureSchedule::setTarget(SegmentRange segments)
{
    if (segments.isEmpty())
        segments = {};
    if (segments == m_target)
        return;
    m_target = segments;
    m_shown = Outdated;
}

void PictureSchedule::invalidateCoarse()
{
    if (m_shown == CoarseOne)
        m_shown = Outdated;
}

bool PictureSchedule::leadsToTarget(const Picture& picture) const
{
    return picture.valid && picture.segments.first == m_target.first &&
           picture.segments.end <= m_target.end;
}

/** Where to draw on with the least to draw; null to begin anew. */
const PictureSchedule::Picture* PictureSchedule::bestStart() const
{
    const Picture* best = leadsToTarget(m_picture) ? &m_picture : nullptr;
    for (const Picture& checkpoint : m_checkpoints) {
        if (leadsToTarget(checkpoint) &&
            (best == nullptr || checkpoint.segments.end > best->segments.end))
            best = &checkpoint;
    }
    return best;
}

bool PictureSchedule::mayDrawInFull() const
{
    return !m_inMotion || !m_coarseReady || m_target.count() <= m_segmentsAFrame;
}

bool PictureSchedule::isBusy() const
{
    return m_shown == Outdated || (m_shown == CoarseOne && mayDrawInFull()) || wantsCheckpoint();
}

/** After many layers were added one by one, the next one down would be far from a checkpoint. */
bool PictureSchedule::wantsCheckpoint() const
{
    if (m_shown != Full || m_inMotion || m_target.count() < kMostWithoutCheckpoint)
        return false;
    const std::uint64_t lowest = m_target.end - kMostWithoutCheckpoint;
    return std::none_of(m_checkpoints.begin(), m_checkpoints.end(), [&](const Picture& checkpoint) {
        return leadsToTarget(checkpoint) && checkpoint.segments.end >= lowest;
    });
}

PictureSchedule::Step PictureSchedule::save()
{
    const auto isLessUseful = [this](const Picture& a, const Picture& b) {
        const bool aLeads = leadsToTarget(a);
        const bool bLeads = leadsToTarget(b);
        return aLeads != bLeads ? bLeads : aLeads && a.segments.end < b.segments.end;
    };
    const auto slot = std::min_element(m_checkpoints.begin(), m_checkpoints.end(), isLessUseful);
    *slot = m_picture;
    return {Step::Save, int(slot - m_checkpoints.begin()), m_picture.segments};
}

PictureSchedule::Step PictureSchedule::next(std::uint64_t maxSegments)
{
    if (!isBusy())
        return {};
    if (m_shown == Full)
        return save();
    const Picture* start = bestStart();
    const std::uint64_t done = start == nullptr ? 0 : start->segments.count();
    const bool isLong =
        m_target.count() - done > kFramesBeforeCoarse * m_segmentsAFrame || !mayDrawInFull();
    if (m_shown == Outdated && isLong && m_coarseReady) {
        m_shown = CoarseOne;
        // The coarse picture is drawn where the full one was.
        m_picture.valid = false;
        return {Step::Coarse, 0, m_target};
    }
    if (start == nullptr) {
        m_picture = {true, {m_target.first, m_target.first}};
        return {Step::Begin, 0, {}};
    }
    if (start != &m_picture) {
        m_picture = *start;
        return {Step::Restore, int(start - m_checkpoints.data()), m_picture.segments};
    }
    std::uint64_t stop = std::min(m_target.end, m_picture.segments.end + maxSegments);
    if (!m_inMotion) {
        for (const std::uint64_t distance : kDistances) {
            const std::uint64_t place = m_target.end - std::min(distance, m_target.count());
            if (place == m_picture.segments.end && place > m_target.first && !isSaved(m_picture))
                return save();
            if (place > m_picture.segments.end)
                stop = std::min(stop, place);
        }
    }
    if (m_picture.segments.end < m_target.end) {
        const SegmentRange slice = {m_picture.segments.end, stop};
        m_picture.segments.end = stop;
        return {Step::Draw, 0, slice};
    }
    m_shown = Full;
    return {Step::Show, 0, m_target};
}

bool PictureSchedule::isSaved(const Picture& picture) const
{
    return std::any_of(m_checkpoints.begin(), m_checkpoints.end(), [&](const Picture& checkpoint) {
        return checkpoint.valid && checkpoint.segments == picture.segments;
    });
}

} // namespace pathscope
