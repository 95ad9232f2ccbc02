// Chromium with the built page in it, served from this machine.
import { spawn } from 'node:child_process';
import { createInterface } from 'node:readline';
import { fileURLToPath } from 'node:url';
import puppeteer from 'puppeteer-core';

export const root = fileURLToPath(new URL('../../', import.meta.url));

/** Serves build/page; gives its address and what ends it. */
async function serve() {
  const server = spawn(process.execPath, [`${root}scripts/serve-page`, '0'], {
    stdio: ['ignore', 'pipe', 'inherit'],
  });
  for await (const line of createInterface({ input: server.stdout }))
    return { address: line.split(' ')[0], stop: () => server.kill() };
  throw new Error('scripts/serve-page did not start');
}

/** One browser for a file of tests. */
export async function openBrowser() {
  const server = await serve();
  const browser = await puppeteer.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    args: [
      '--no-sandbox',
      '--autoplay-policy=no-user-gesture-required',
      '--use-fake-device-for-media-stream',
    ],
    protocolTimeout: 60000,
  });
  return {
    browser,
    address: server.address,
    async close() {
      await browser.close();
      server.stop();
    },
    /**
     * A page that is ready; what goes wrong in it is collected in faults.
     * @param {string} hash
     */
    async page(hash = '', { before = async () => {}, ready = '#start:enabled' } = {}) {
      const page = await browser.newPage();
      page.faults = [];
      page.requests = [];
      page.on('console', (message) => {
        if (['error', 'warn'].includes(message.type())) page.faults.push(message.text());
      });
      page.on('pageerror', (error) => page.faults.push(String(error)));
      page.on('request', (request) => page.requests.push(request.url()));
      await before(page);
      await page.goto(server.address + hash);
      await page.waitForSelector(ready, { timeout: 15000 });
      return page;
    },
  };
}
