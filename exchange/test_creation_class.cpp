#include "exchange/test_creation_class.h"

#include <cstdio>

void Test_CreationClass::addBlock(const DL_BlockData& /*data*/)
{
    in_block = true;
    blocks.emplace_back();
}

void Test_CreationClass::endBlock()
{
    in_block = false;
    if (!blocks.empty() && blocks.back().is_empty())
        blocks.pop_back();
}

void Test_CreationClass::addPoint(const DL_PointData& data)
{
    points.push_back(data);
}

void Test_CreationClass::addLine(const DL_LineData& data)
{
    (in_block ? blocks.back().lines : lines).push_back(data);
}

void Test_CreationClass::addPolyline(const DL_PolylineData& data)
{
    polylines.push_back({data, {}});
}

void Test_CreationClass::addVertex(const DL_VertexData& data)
{
    // A damaged drawing can have a vertex outside any polyline.
    if (!polylines.empty())
        polylines.back().vertices.push_back(data);
}

void Test_CreationClass::add3dFace(const DL_3dFaceData& /*data*/)
{
    std::fputs("3DFACE\n", stdout);
}

void Test_CreationClass::addSolid(const DL_SolidData& data)
{
    (in_block ? blocks.back().solids : solids).push_back(data);
}

void Test_CreationClass::addMText(const DL_MTextData& data)
{
    (in_block ? blocks.back().mtexts : mtexts).push_back(data);
}

void Test_CreationClass::addText(const DL_TextData& data)
{
    texts.push_back(data);
}
