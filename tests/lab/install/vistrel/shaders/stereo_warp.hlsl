// The stereo warp of the sample installation: a stand-in for the product's, written for the tests. It keeps the
// product's interface (PSMain, ps_5_0, the 112 bytes at b0, colour t0, depth t1, sampler s0) and does the same kind
// of work: for each pixel of an eye it marches through the depth map, from the nearest plane to the farthest, to the
// surface that this eye sees there, in as many steps as the settings say.

cbuffer WarpConstants : register(b0)
{
    float Separation;       // share of the screen's width
    float ScreenDepth;      // depth that stays in the screen's plane
    float DepthStrength;
    float PopoutLimit;      // the most that comes out of the screen, in shares of Separation
    float EyeBalance;       // -1 gives all shift to the left eye, 1 all to the right
    uint Eye;
    uint SearchSteps;
    uint DebugStage;        // 1 depth, 2 shift, 3 length of the march
    float EdgeMagnet;
    float DepthHasMips;
    float DepthResolution;
    float DepthIsRoot;
    float DepthInverted;
    float FillSmooth;
    float CurveRadius;
    float ScreenSize;
    float Threshold;        // a jump in depth above this is an edge
    float FlatEverywhere;
    float FlatInRegion;
    float StayOnScreen;
    float4 Region;          // low x, low y, high x, high y
    float CurveMode;
    float CurveWraps;
    float2 CurveMargin;
};

Texture2D Colour : register(t0);
Texture2D Depth : register(t1);
SamplerState Linear : register(s0);

struct Pixel
{
    float4 Pos : SV_Position;
    float2 Tex : TEXCOORD0;
};

float DepthAt(float2 place)
{
    float depth = Depth.SampleLevel(Linear, place, DepthHasMips).r;
    depth = lerp(depth, 1 - depth, DepthInverted);
    return lerp(depth, depth * depth, DepthIsRoot);
}

// How far this eye sees something of this depth from its place, in shares of the screen's width.
float ShiftOf(float depth, float side)
{
    float shift = min((depth - ScreenDepth) * DepthStrength, PopoutLimit);
    return shift * Separation * 0.5 * (1 - side * EyeBalance);
}

// Depth at `place`, drawn to the nearer side of an edge.
float MagneticDepth(float2 place, float depth)
{
    float reach = 1 / DepthResolution;
    float nearer = max(DepthAt(place - float2(reach, 0)), DepthAt(place + float2(reach, 0)));
    return nearer - depth > Threshold ? lerp(depth, nearer, EdgeMagnet) : depth;
}

float2 OnScreen(float2 place)
{
    float wrapped = CurveWraps > 0 ? frac(place.x) : place.x;
    return float2(StayOnScreen > 0 ? saturate(wrapped) : wrapped, place.y);
}

// A flat place on the curved screen, whose sides are farther round than they look.
float2 Curved(float2 place)
{
    if (CurveMode <= 0)
    {
        return place;
    }
    float2 centred = place - 0.5;
    centred.x *= 1 + centred.x * centred.x * ScreenSize / CurveRadius;
    return centred * (1 + CurveMargin) + 0.5;
}

bool IsFlat(float2 place)
{
    bool in_region = all(place >= Region.xy) && all(place <= Region.zw);
    return FlatEverywhere > 0 || (FlatInRegion > 0 && in_region);
}

float4 PSMain(Pixel pixel) : SV_Target
{
    float2 place = Curved(pixel.Tex);
    float side = Eye == 0 ? 1 : -1;
    float nearest = ShiftOf(1, side);
    float farthest = ShiftOf(0, side);
    if (IsFlat(place))
    {
        nearest = 0;
        farthest = 0;
    }


    float step = (nearest - farthest) / max(SearchSteps, 1);
    float edge = Threshold * abs(nearest - farthest);
    float found_shift = nearest;
    float surface_before = farthest;
    bool hole = false;
    uint taken = 0;
    uint steps = min(SearchSteps, 256);
    [loop] for (uint i = 0; i <= steps; ++i)
    {
        float ray_shift = nearest - i * step;
        float surface = ShiftOf(DepthAt(OnScreen(place - float2(side * ray_shift, 0))), side);
        taken = i;
        if (surface >= ray_shift)
        {
            // The surface lies between this step and the one before. Where it jumps there, this eye looks behind
            // the edge of something near, at what the picture does not hold: it gets what lies beside the edge.
            hole = i > 0 && surface - surface_before > edge;
            float gap_before = ray_shift + step - surface_before;
            float back = gap_before / max(gap_before + surface - ray_shift, 0.000001);
            found_shift = i == 0 ? nearest : (hole ? ray_shift + step : ray_shift + step * (1 - back));
            break;
        }
        surface_before = surface;
        found_shift = ray_shift;
    }
    float2 found = OnScreen(place - float2(side * found_shift, 0));

    float depth = DepthAt(found);
    if (EdgeMagnet > 0)
    {
        found = OnScreen(place - float2(side * ShiftOf(MagneticDepth(found, depth), side), 0));
    }
    float3 colour = Colour.SampleLevel(Linear, found, 0).rgb;
    if (hole && FillSmooth > 0)
    {
        float2 aside = OnScreen(found - float2(side * (nearest - farthest), 0));
        colour = lerp(colour, Colour.SampleLevel(Linear, aside, 0).rgb, 0.5);
    }
    if (DebugStage == 1)
    {
        colour = depth;
    }
    else if (DebugStage == 2)
    {
        colour = found_shift * 50 + 0.5;
    }
    else if (DebugStage == 3)
    {
        colour = float(taken) / max(SearchSteps, 1);
    }
    // The eyes are written in sRGB, which the desktop's picture already is.
    return float4(pow(saturate(colour), 2.2), 1);
}
