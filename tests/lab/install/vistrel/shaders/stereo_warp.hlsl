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
    float DepthHasMips;     // such a map is smooth: half the jump makes an edge
    float DepthResolution;
    float HalfRowLower;     // the depth map lies half of its rows lower
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

// How one eye sees the depth map.
struct View
{
    float side;      // 1 for the left eye, -1 for the right
    float scale;     // of the shift
    float forward;   // of the depth; -1 when it is inverted
    float backward;
};

// How far the eye sees something of this depth from its place, in shares of the screen's width.
float ShiftOf(float depth, View view)
{
    float nearness = depth * view.forward + view.backward;
    return min((nearness - ScreenDepth) * DepthStrength, PopoutLimit) * view.scale;
}

// A flat place on the curved screen, whose sides are farther round than they look.
float2 Curved(float2 place)
{
    float2 centred = place - 0.5;
    centred.x *= 1 + centred.x * centred.x * ScreenSize / CurveRadius;
    float2 curved = centred * (1 + CurveMargin) + 0.5;
    curved.x = CurveWraps > 0 ? frac(curved.x) : curved.x;
    return CurveMode > 0 ? curved : place;
}

bool IsFlat(float2 place)
{
    bool in_region = all(place >= Region.xy) && all(place <= Region.zw);
    return FlatEverywhere > 0 || (FlatInRegion > 0 && in_region);
}

float4 PSMain(Pixel pixel) : SV_Target
{
    float2 place = Curved(pixel.Tex);
    View view;
    view.side = Eye == 0 ? 1 : -1;
    view.scale = IsFlat(place) ? 0 : Separation * 0.5 * (1 - view.side * EyeBalance);
    view.forward = 1 - 2 * DepthInverted;
    view.backward = DepthInverted;

    float nearest = ShiftOf(1 - DepthInverted, view);
    float farthest = ShiftOf(DepthInverted, view);
    uint steps = min(SearchSteps, 256);
    float step = (nearest - farthest) / max(steps, 1);

    float2 size;
    Depth.GetDimensions(size.x, size.y);

    // The march: the first surface that reaches as far out as the ray is what this eye sees.
    float ray = nearest;
    float depth = 1;
    float surface = nearest;
    float surface_before = nearest;
    uint taken = 0;
    [loop] for (; taken <= steps; ++taken)
    {
        float2 texel = clamp(float2(place.x - view.side * ray, place.y) * size, 0, size - 1);
        depth = Depth.Load(int3(texel, 0)).r;
        surface = ShiftOf(depth, view);
        if (surface >= ray)
        {
            break;
        }
        surface_before = surface;
        ray -= step;
    }

    // It lies between this step and the one before. Where it jumps there, this eye looks behind the edge of something
    // near, at what the picture does not hold: it gets what lies beside the edge, farther away from it when holes are
    // filled smoothly, and with some of the near side when edges attract.
    float jump = taken > 0 ? surface - surface_before : 0;
    bool hole = jump > Threshold * (1 - 0.5 * DepthHasMips) * (nearest - farthest);
    float gap_before = ray + step - surface_before;
    float share = saturate(gap_before / max(gap_before + surface - ray, 0.000001));
    float back = hole ? 1 + FillSmooth - EdgeMagnet : 1 - share;
    float found_shift = ray + (taken > 0 ? step * back : 0);
    float2 found = float2(place.x - view.side * found_shift, place.y);
    found.x = StayOnScreen > 0 ? saturate(found.x) : found.x;
    found.y += 0.5 * HalfRowLower / max(DepthResolution, 1);

    float3 colour = Colour.SampleLevel(Linear, found, 0).rgb;
    colour = DebugStage == 1 ? depth : colour;
    colour = DebugStage == 2 ? found_shift * 50 + 0.5 : colour;
    colour = DebugStage == 3 ? float(taken) / max(steps, 1) : colour;
    // The eyes are written in sRGB, which the desktop's picture already is; a square is close to that curve.
    return float4(colour * colour, 1);
}
