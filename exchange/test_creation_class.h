#pragma once

#include <dxflib/dl_creationadapter.h>

#include <vector>

/// Entities of a drawing: what a writer is about to write, and where dxflib puts
/// what it reads. Only points and polylines become measurements; the rest is
/// kept as it comes.
class Test_CreationClass : public DL_CreationAdapter
{
public:
    struct polyline
    {
        DL_PolylineData data;
        std::vector<DL_VertexData> vertices;
    };

    /// What a block holds. Its points and polylines stand with those of the
    /// drawing.
    struct block
    {
        std::vector<DL_LineData> lines;
        std::vector<DL_SolidData> solids;
        std::vector<DL_MTextData> mtexts;

        [[nodiscard]] bool is_empty() const
        {
            return lines.empty() && solids.empty() && mtexts.empty();
        }
    };

    bool in_block = false;
    std::vector<DL_PointData> points;
    std::vector<DL_LineData> lines;
    std::vector<polyline> polylines;
    std::vector<DL_ArcData> arcs;       ///< stays empty
    std::vector<DL_CircleData> circles; ///< stays empty
    std::vector<DL_SolidData> solids;
    std::vector<DL_TextData> texts;
    std::vector<DL_MTextData> mtexts;
    std::vector<block> blocks;

    void addBlock(const DL_BlockData& data) override;
    void endBlock() override;
    void addPoint(const DL_PointData& data) override;
    void addLine(const DL_LineData& data) override;
    void addPolyline(const DL_PolylineData& data) override;
    void addVertex(const DL_VertexData& data) override;
    void add3dFace(const DL_3dFaceData& data) override;
    void addSolid(const DL_SolidData& data) override;
    void addMText(const DL_MTextData& data) override;
    void addText(const DL_TextData& data) override;
};
