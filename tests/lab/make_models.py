#!/usr/bin/env python3
"""Makes the sample depth models of the lab: tiny ONNX graphs, nothing fetched, nothing committed.

    tests/lab/make_models.py MODELS_FOLDER [--broken FOLDER]

MODELS_FOLDER gets the product's twelve model files, each with a float32 input at its preset's size and a graph of one
cheap node, so that a whole run over all of them stays in seconds. One of them has dynamic dimensions, one declares
another size than its preset.

--broken makes, one file a defect, what a damaged or foreign model file may look like.
"""
import argparse
import pathlib
import struct

# File name, width and height that the product lists. The order is the product's.
PRESETS = [
    ("depth_anything_v2_vits_fp16_252.onnx", 256, 256),
    ("depth_anything_v2_small_392_fp16.onnx", 392, 392),
    ("depth_anything_v2_vits_fp16.onnx", 518, 518),
    ("distill_any_depth_small_518x294_fp16.onnx", 518, 294),
    ("distill_any_depth_small_686x392_fp16.onnx", 686, 392),
    ("distill_any_depth_small_798x448_fp16.onnx", 798, 448),
    ("distill_any_depth_small_924x518_fp16.onnx", 924, 518),
    ("distill_any_depth_small_280x280_fp16.onnx", 280, 280),
    ("distill_any_depth_small_210x210_fp16.onnx", 210, 210),
    ("distill_any_depth_small_322x322_fp16.onnx", 322, 322),
    ("distill_any_depth_small_182x182_fp16.onnx", 182, 182),
    ("vda_s_ring_518x294_fp16_R15.onnx", 518, 294),
]
OTHER_SIZE = {"depth_anything_v2_vits_fp16_252.onnx": (518, 294)}
DYNAMIC = {"distill_any_depth_small_322x322_fp16.onnx"}

FLOAT, INT64 = 1, 7  # TensorProto.DataType
INT_ATTRIBUTE, INTS_ATTRIBUTE = 2, 7  # AttributeProto.AttributeType


def varint(number):
    """A protobuf variable-length integer; negative numbers as 64-bit two's complement."""
    number &= (1 << 64) - 1
    encoded = bytearray()
    while number > 0x7F:
        encoded.append(number & 0x7F | 0x80)
        number >>= 7
    encoded.append(number)
    return bytes(encoded)


def field(number, value):
    """One protobuf field: an int as a varint, text and bytes with their length."""
    if isinstance(value, int):
        return varint(number << 3) + varint(value)
    data = value.encode() if isinstance(value, str) else value
    return varint(number << 3 | 2) + varint(len(data)) + data


def tensor(name, shape, element_type=FLOAT):
    """A ValueInfoProto. A dimension is a number, or a name for a dynamic one."""
    dimensions = b"".join(field(1, field(2 if isinstance(d, str) else 1, d)) for d in shape)
    tensor_type = field(1, element_type) + field(2, dimensions)
    return field(1, name) + field(2, field(1, tensor_type))


def node(operator, inputs, outputs, attributes=b""):
    return (b"".join(field(1, name) for name in inputs) + b"".join(field(2, name) for name in outputs)
            + field(3, "node_" + outputs[0]) + field(4, operator) + attributes)


def model(nodes, inputs, outputs):
    """A ModelProto: IR version 8, the operators of opset 13."""
    graph = (b"".join(field(1, n) for n in nodes) + field(2, "depth")
             + b"".join(field(11, i) for i in inputs) + b"".join(field(12, o) for o in outputs))
    return field(1, 8) + field(2, "vistrel_diag lab") + field(7, graph) + field(8, field(1, "") + field(2, 13))


def relu(shape, element_type=FLOAT):
    return model([node("Relu", ["pixel_values"], ["predicted_depth"])],
                 [tensor("pixel_values", shape, element_type)],
                 [tensor("predicted_depth", shape, element_type)])


def channel_mean(shape):
    """The mean over the colour channels: the output has a depth map's shape."""
    axes = field(5, field(1, "axes") + field(8, 1) + field(20, INTS_ATTRIBUTE))
    keep = field(5, field(1, "keepdims") + field(3, 0) + field(20, INT_ATTRIBUTE))
    return model([node("ReduceMean", ["pixel_values"], ["predicted_depth"], axes + keep)],
                 [tensor("pixel_values", shape)],
                 [tensor("predicted_depth", [shape[0], *shape[2:]])])


def make_install(folder):
    folder.mkdir(parents=True, exist_ok=True)
    for index, (name, width, height) in enumerate(PRESETS):
        width, height = OTHER_SIZE.get(name, (width, height))
        shape = ["batch", 3, "height", "width"] if name in DYNAMIC else [1, 3, height, width]
        make = relu if index % 2 == 0 else channel_mean
        (folder / name).write_bytes(make(shape))


def make_broken(folder):
    folder.mkdir(parents=True, exist_ok=True)
    whole = relu([1, 3, 64, 64])
    image = [1, 3, 64, 64]
    variants = {
        "good": whole,
        "empty": b"",
        "truncated": whole[: len(whole) // 2],
        "no_protobuf": struct.pack("<8I", *[0xDEADBEEF] * 8) * 16,
        "unknown_operator": model([node("NoSuchOperator", ["x"], ["y"])], [tensor("x", image)],
                                  [tensor("y", image)]),
        "bad_graph": model([node("Relu", ["nowhere"], ["y"])], [tensor("x", image)], [tensor("y", image)]),
        "no_outputs": model([node("Relu", ["x"], ["y"])], [tensor("x", image)], []),
        "no_inputs": model([node("RandomNormal", [], ["y"], field(5, field(1, "shape") + field(8, 4)
                                                                  + field(20, INTS_ATTRIBUTE)))],
                           [], [tensor("y", [4])]),
        "integer_input": relu_like_integer(image),
        "two_inputs": two_inputs(image),
        "sequence_input": sequence_input(),
        "rank_3": relu([3, 64, 64]),
        "zero_dimension": relu([1, 3, 0, 518]),
        "one_channel": relu([1, 1, 64, 64]),
        "huge_dimension": relu([1, 3, 20000, 20000]),
        "absurd_dimension": relu([1, 3, 1 << 40, 1 << 20]),
        "overflowing_dimension": relu([1, 3, 1 << 62, 8]),
        "dynamic": relu(["batch", 3, "height", "width"]),
    }
    for name, content in variants.items():
        (folder / (name + ".onnx")).write_bytes(content)


def relu_like_integer(shape):
    """Abs, because Relu has no integer form in opset 13."""
    return model([node("Abs", ["x"], ["y"])], [tensor("x", shape, INT64)], [tensor("y", shape, INT64)])


def two_inputs(shape):
    """A picture and a state beside it, as video models have. Each goes its own way, so that the graph compiles."""
    return model([node("Relu", ["x"], ["y"]), node("Abs", ["state"], ["next_state"])],
                 [tensor("x", shape), tensor("state", [2], INT64)],
                 [tensor("y", shape), tensor("next_state", [2], INT64)])


def sequence_input():
    """An input that is no tensor at all: a sequence of them, of which the first is taken."""
    sequence = field(1, "x") + field(2, field(4, field(1, field(1, field(1, FLOAT)))))
    return model([node("SequenceLength", ["x"], ["y"])], [sequence], [tensor("y", [], INT64)])


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("models_folder", type=pathlib.Path)
    parser.add_argument("--broken", type=pathlib.Path, metavar="FOLDER")
    arguments = parser.parse_args()
    make_install(arguments.models_folder)
    if arguments.broken:
        make_broken(arguments.broken)


if __name__ == "__main__":
    main()
