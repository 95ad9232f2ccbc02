// The three pictures of the sound: level and delay time of the last ten seconds, and the spectrum.
import { Canvas } from './canvas.js';
import { historySeconds } from './history.js';
import { lowestDb } from './levels.js';

/** @typedef {import('./history.js').History} History */

/** In dB, left upwards and right downwards from the middle; the output over the input. */
export class EnvelopeDisplay {
  /** @param {HTMLCanvasElement} element @param {History} history */
  constructor(element, history) {
    this.canvas = new Canvas(element);
    this.history = history;
  }

  /** @param {number} now s */
  draw(now) {
    const { canvas } = this;
    const { colours } = canvas;
    canvas.clear();
    const lines = [-40, -20, 0];
    for (const db of lines) for (const side of [-1, 1]) canvas.horizontal(this.y(db, side));
    for (let s = 2; s < historySeconds; s += 2)
      canvas.vertical(canvas.width * (1 - s / historySeconds), `−${s} s`, canvas.height - 4);
    this.fill(now, 0, -1, colours.input, 1);
    this.fill(now, 1, 1, colours.input, 1);
    this.fill(now, 2, -1, colours.left, 0.35);
    this.fill(now, 3, 1, colours.right, 0.35);
    canvas.horizontal(canvas.height / 2);
    for (const db of lines) canvas.label(`${db} dB`.replace('-', '−'), 4, this.y(db, -1) + 12);
    canvas.label('L', canvas.width - 12, 14);
    canvas.label('R', canvas.width - 12, canvas.height - 6);
  }

  /** @private @param {number} db @param {number} side -1 up, 1 down */
  y(db, side) {
    const half = this.canvas.height / 2;
    // Up to 6 dB above full scale.
    return half + side * half * Math.min(Math.max((db - lowestDb) / (6 - lowestDb), 0), 1);
  }

  /**
   * @private @param {number} now @param {number} trace @param {number} side
   * @param {string} colour @param {number} opacity of the area under the line
   */
  fill(now, trace, side, colour, opacity) {
    const { pen, width, height } = this.canvas;
    const levels = this.history.levels[trace];
    pen.fillStyle = pen.strokeStyle = colour;
    pen.lineWidth = 1.5;
    pen.beginPath();
    let first = NaN;
    let last = width;
    this.history.visit(now, (index, age) => {
      last = width * (1 - age / historySeconds);
      if (Number.isNaN(first)) pen.moveTo((first = last), height / 2);
      pen.lineTo(last, this.y(levels[index], side));
    });
    if (opacity < 1) pen.stroke();
    pen.lineTo(last, height / 2);
    pen.globalAlpha = opacity;
    pen.fill();
    pen.globalAlpha = 1;
  }
}

/** How far in the past each line is read, on a logarithmic scale from 1 ms to 8 s. */
export class DelayDisplay {
  /** @param {HTMLCanvasElement} element @param {History} history */
  constructor(element, history) {
    this.canvas = new Canvas(element);
    this.history = history;
  }

  /** @param {number} now s */
  draw(now) {
    const { canvas } = this;
    canvas.clear();
    for (const [seconds, text] of /** @type {[number, string][]} */ ([
      [0.01, '10 ms'],
      [0.1, '100 ms'],
      [1, '1 s'],
    ]))
      canvas.horizontal(this.y(seconds), text);
    this.line(now, 0, canvas.colours.left);
    this.line(now, 1, canvas.colours.right);
  }

  /** @private @param {number} seconds */
  y(seconds) {
    const share = Math.log(Math.min(Math.max(seconds, 0.001), 8) / 0.001) / Math.log(8000);
    return (this.canvas.height - 3) * (1 - share) + 1;
  }

  /** @private @param {number} now @param {number} side @param {string} colour */
  line(now, side, colour) {
    const { pen, width } = this.canvas;
    const delays = this.history.delays[side];
    pen.strokeStyle = colour;
    pen.lineWidth = 2;
    pen.setLineDash(side === 0 ? [] : [6, 4]); // equal times stay visible as two
    pen.beginPath();
    this.history.visit(now, (index, age) => {
      if (delays[index] > 0) pen.lineTo(width * (1 - age / historySeconds), this.y(delays[index]));
    });
    pen.stroke();
    pen.setLineDash([]);
  }
}

const spectrumLow = 30; // Hz
const spectrumHigh = 18000; // Hz
const spectrumTop = -10; // dB
const spectrumBottom = -100; // dB

/** Of the output's sum, from 30 Hz to 18 kHz. */
export class SpectrumDisplay {
  /** @param {HTMLCanvasElement} element @param {AnalyserNode} tap */
  constructor(element, tap) {
    this.canvas = new Canvas(element);
    this.tap = tap;
    this.bins = new Float32Array(tap.frequencyBinCount);
  }

  draw() {
    const { canvas, tap, bins } = this;
    const { pen, width, height, colours } = canvas;
    canvas.clear();
    const octaves = Math.log(spectrumHigh / spectrumLow);
    tap.getFloatFrequencyData(bins);
    const binOf = bins.length / (tap.context.sampleRate / 2); // per Hz
    pen.fillStyle = colours.left;
    pen.beginPath();
    pen.moveTo(0, height);
    for (let x = 0; x <= width; x += 2) {
      // The highest bin of the columns' frequencies, or the one between them.
      const first = spectrumLow * Math.exp((octaves * x) / width) * binOf;
      const end = spectrumLow * Math.exp((octaves * (x + 2)) / width) * binOf;
      let db = -Infinity;
      for (let i = Math.round(first); i <= Math.max(end, Math.round(first)); ++i)
        if (bins[i] > db) db = bins[i];
      const level = Math.min(
        Math.max((db - spectrumBottom) / (spectrumTop - spectrumBottom), 0),
        1,
      );
      pen.lineTo(x, height * (1 - level));
    }
    pen.strokeStyle = colours.left;
    pen.lineWidth = 1.5;
    pen.stroke();
    pen.lineTo(width, height);
    pen.globalAlpha = 0.35;
    pen.fill();
    pen.globalAlpha = 1;
    for (const [hz, text] of /** @type {[number, string][]} */ ([
      [100, '100'],
      [1000, '1 k'],
      [10000, '10 k'],
    ]))
      canvas.vertical((width * Math.log(hz / spectrumLow)) / octaves, text, 12);
  }
}
