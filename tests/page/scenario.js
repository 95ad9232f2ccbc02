// Reads the scenarios of the golden renders that play the driver, and makes their input: see
// tests/scenario/scenario.h for the language. Inputs of sines and files are left out.
import { readFileSync } from 'node:fs';

const number = (word) => (word === 'nan' ? NaN : Number(word));

export function readScenarios(path) {
  const all = [];
  const lines = readFileSync(path, 'utf8').split('\n');
  if (!lines.some((line) => line.startsWith('scenario '))) lines.unshift('scenario device');
  for (const line of lines) {
    const words = line.split('#')[0].trim().split(/\s+/);
    const scenario = all.at(-1);
    if (words[0] === 'scenario')
      all.push({ kind: words[1], hash: words[2], vector: 64, input: ['silence'], events: [] });
    else if (words[0] === 'input') scenario.input = words.slice(1);
    else if (words[0] === 'seed') scenario.seed = words.slice(1).map(Number);
    else if (words[0] === 'at')
      scenario.events.push({ frame: Number(words[1]), action: words[2], words: words.slice(3) });
    else if (words[0]) scenario[words[0]] = Number(words[1]);
  }
  for (const { events } of all) events.sort((a, b) => a.frame - b.frame);
  return all.filter(({ kind }) => kind === 'device');
}

function randomNumbers(seed, level) {
  let state = BigInt(seed);
  return () => {
    state = BigInt.asUintN(64, state * 6364136223846793005n + 1442695040888963407n);
    return ((Number(state >> 40n) / 16777216) * 2 - 1) * level;
  };
}

export function makeInput({ input, frames }) {
  const [name, ...numbers] = input;
  const channels = [new Float32Array(frames), new Float32Array(frames)];
  if (name === 'impulse') {
    const [at, left, right] = numbers.map(Number);
    if (at < frames) ((channels[0][at] = left), (channels[1][at] = right));
  } else if (name === 'noise' || name === 'burst') {
    const [seed, level, on, off] = name === 'noise' ? [...numbers, 1, 0] : numbers;
    const period = Math.max(Number(on) + Number(off), 1);
    channels.forEach((channel, c) => {
      const next = randomNumbers(BigInt(seed) + BigInt(c), Number(level));
      for (let n = 0; n < frames; ++n) channel[n] = next() * (n % period < Number(on) ? 1 : 0);
    });
  } else if (name !== 'silence') {
    return null;
  }
  return channels;
}

export function act(effect, names, { action, words }) {
  if (action === 'set') effect.set(names.indexOf(words[0]), words.slice(1).map(number));
  else effect[action]();
}

// FNV-1a, a frame at a time: two 32-bit floats as one little-endian word, -0 made +0.
export function hashOf([left, right]) {
  const bits = (channel) => new Uint32Array(channel.map((x) => x + 0).buffer);
  const [l, r] = [bits(left), bits(right)];
  let hash = 0xcbf29ce484222325n;
  for (let n = 0; n < l.length; ++n)
    hash = BigInt.asUintN(64, (hash ^ (BigInt(l[n]) | (BigInt(r[n]) << 32n))) * 0x100000001b3n);
  return hash.toString(16).padStart(16, '0');
}
