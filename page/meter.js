// A stereo peak meter in dB: rises at once, falls by 24 dB a second, and keeps a lamp lit for two
// seconds after full scale was passed.
import { element } from './elements.js';
import { decibels, lowestDb } from './levels.js';

const fall = 24; // dB per second
const lampTime = 2; // s

export class Meter {
  /** @param {HTMLElement} place @param {string} label */
  constructor(place, label) {
    this.bars = [0, 1].map(() => element('div', { class: 'bar' }));
    this.lamp = element('span', { class: 'lamp' }, 'over');
    this.text = element('span', { class: 'reading' }, '');
    this.track = element(
      'div',
      {
        class: 'tracks',
        role: 'meter',
        'aria-label': `${label} level`,
        'aria-valuemin': String(lowestDb),
        'aria-valuemax': '0',
        'aria-valuenow': String(lowestDb),
      },
      ...this.bars.map((bar) => element('div', { class: 'track' }, bar)),
    );
    place.append(element('span', { class: 'label' }, label), this.track, this.text, this.lamp);
    this.shown = [lowestDb, lowestDb];
    this.highest = lowestDb - 1; // since the text was written
    this.textTime = 0; // s
    this.overTime = -Infinity; // s
  }

  /** @param {number[]} peaks linear @param {number} time s @param {number} elapsed s */
  show(peaks, time, elapsed) {
    for (let side = 0; side < 2; ++side) {
      const db = decibels(peaks[side]);
      this.shown[side] = Math.max(db, this.shown[side] - fall * elapsed, lowestDb);
      this.bars[side].style.transform = `scaleX(${Math.min(1 - this.shown[side] / lowestDb, 1)})`;
      if (db > this.highest) this.highest = db;
      if (db > 0) this.overTime = time;
    }
    this.lamp.classList.toggle('lit', time - this.overTime < lampTime);
    if (time - this.textTime < 0.3) return;
    const db = Math.round(this.highest * 10) / 10;
    const silent = db < lowestDb;
    this.text.textContent = silent ? 'silent' : `${db.toFixed(1).replace('-', '−')} dB`;
    this.track.setAttribute('aria-valuenow', String(Math.max(Math.min(db, 0), lowestDb)));
    this.track.setAttribute('aria-valuetext', silent ? 'silent' : `${db} dB`);
    this.textTime = time;
    this.highest = lowestDb - 1;
  }
}
