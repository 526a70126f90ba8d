// node run_directly.js PACKAGE NETWORK INPUT.npy
//
// Runs a network with one input of floats in ONNX Runtime's own package for
// Node.js, without any code of this project, and prints its first output.
const fs = require('fs');
const [packageDirectory, network, input] = process.argv.slice(2);
const ort = require(packageDirectory);

// The header of the .npy file names the shape; the floats stand behind it.
function readArray(path) {
  const bytes = fs.readFileSync(path);
  const end = 10 + bytes.readUInt16LE(8);
  const shape = /'shape': \(([^)]*)\)/.exec(bytes.toString('latin1', 10, end));
  const floats = bytes.buffer.slice(bytes.byteOffset + end);
  return new ort.Tensor('float32', new Float32Array(floats),
      shape[1].split(',').filter((size) => size.trim()).map(Number));
}

async function main() {
  const session = await ort.InferenceSession.create(network);
  const outputs =
      await session.run({[session.inputNames[0]]: readArray(input)});
  const values = outputs[session.outputNames[0]].data;
  console.log([...values].map((value) => value.toPrecision(6)).join(' '));
}

main();
