// The cheapest shader that passes for the product's warp, for runs whose subject is another section.
Texture2D colour : register(t0);
SamplerState linear_sampler : register(s0);

float4 PSMain(float4 position : SV_Position, float2 place : TEXCOORD0) : SV_Target {
    return colour.SampleLevel(linear_sampler, place, 0);
}
