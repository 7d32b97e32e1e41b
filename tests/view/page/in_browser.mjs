// The page in a real browser: every example opens without a fault and draws; time, field and filter
// change what is seen; a click shows the patch and the value that the results hold.
//
// node in_browser.mjs CHROMIUM EXAMPLES TOWNSKIN TOWNSKIN_VIEW [TOWNSKIN_CASE]
import assert from "node:assert/strict";
import { spawnSync } from "node:child_process";
import { cpSync, mkdtempSync, readFileSync, rmSync, truncateSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { chromium } from "playwright-core";

const [browser_program, examples, townskin, townskin_view, townskin_case] = process.argv.slice(2);
const folder = mkdtempSync(join(tmpdir(), "townskin_page_"));
const desk = { width: 1280, height: 800 };
const phone = { width: 390, height: 844 };

function call(program, args, cwd) {
  const done = spawnSync(program, args, { cwd, encoding: "utf8" });
  assert.equal(done.status, 0, `${program} ${args.join(" ")}: ${done.stderr}${done.stdout}`);
}

/** A run of one day of an example; a dated one runs its days. */
function run_of(example, name = example) {
  const run = join(folder, name);
  if (example === "city") call(townskin_case, [join(examples, example, "site.toml"), "-o", run], folder);
  else cpSync(join(examples, example), run, { recursive: true });
  const control = join(run, "control.txt");
  const lines = readFileSync(control, "utf8").split("\n");
  const step = Number(lines[4].trim().split(/\s+/)[1]);
  if (example !== "two_months") lines[2] = `-1 ${86400 / step}`;
  writeFileSync(control, lines.join("\n"));
  call(townskin, [], run);
  return run;
}

function page_of(run) {
  call(townskin_view, [run], folder);
  return `${run}.html`;
}

/** Temperatures of a result file: PID -> hour -> value. */
function temperatures(run, file = "PatchSurfTemp.txt") {
  const found = new Map();
  for (const line of readFileSync(join(run, file), "utf8").split("\n").slice(1)) {
    const row = line.trim().split(/\s+/).map(Number);
    if (row.length < 6) continue;
    if (!found.has(row[0])) found.set(row[0], new Map());
    found.get(row[0]).set(row[4], row[5]);
  }
  return found;
}

/** The rows of a patch file. */
function patches_of(run) {
  const rows = readFileSync(join(run, "Patch.txt"), "utf8").split("\n").slice(1);
  return rows.map((row) => row.trim().split(/\s+/).map(Number)).filter((row) => row.length > 8)
    .map(([pid, i, j, k, area, nx, ny, nz, type]) => ({ pid, i, j, k, area, nz, type }));
}

async function open(context, file) {
  const page = await context.newPage();
  page.faults = [];
  page.on("console", (message) => {
    if (["error", "warning"].includes(message.type()) && !/GPU stall|swiftshader/i.test(message.text()))
      page.faults.push(message.text());
  });
  page.on("pageerror", (fault) => page.faults.push(String(fault)));
  page.on("request", (request) => {
    if (!/^(file|data|blob):/.test(request.url())) page.faults.push("asks for " + request.url());
  });
  await page.goto("file://" + encodeURI(file).replaceAll("#", "%23").replaceAll("?", "%3F"));
  await page.waitForSelector("html[data-ready=complete]", { timeout: 60000 });
  return page;
}

/** What the canvas shows: how much of it is drawn, how many colours, and a sum that tells pictures apart. */
function picture(page) {
  return page.evaluate(() => {
    const from = document.getElementById("scene");
    const copy = document.createElement("canvas");
    copy.width = 320;
    copy.height = Math.round((320 * from.height) / from.width);
    const to = copy.getContext("2d", { willReadFrequently: true });
    to.drawImage(from, 0, 0, copy.width, copy.height);
    const { data } = to.getImageData(0, 0, copy.width, copy.height);
    const colours = new Set();
    let drawn = 0;
    let sum = 0;
    for (let n = 0; n < data.length; n += 4) {
      if (data[n + 3] < 250) continue;
      ++drawn;
      colours.add((data[n] >> 3 << 10) | (data[n + 1] >> 3 << 5) | (data[n + 2] >> 3));
      sum = (sum * 31 + data[n] + 7 * data[n + 1] + 13 * data[n + 2]) % 2147483647;
    }
    return { drawn: (4 * drawn) / data.length, colours: colours.size, sum };
  });
}

/** The picture as soon as it is another one; on a busy machine a frame takes its time. */
async function changed(page, from, words) {
  for (let tries = 0; tries < 100; ++tries) {
    const now = await picture(page);
    if (now.sum !== from.sum) return now;
    await page.waitForTimeout(100);
  }
  assert.fail(words);
}

/** The picture when it no longer changes. */
async function at_rest(page) {
  for (let before = await picture(page); ; ) {
    await page.waitForTimeout(250);
    const now = await picture(page);
    if (now.sum === before.sum) return now;
    before = now;
  }
}

async function settle(page) {
  await page.evaluate(() => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))));
}

async function set_time(page, value) {
  await page.getByRole("slider", { name: "time" }).fill(String(value));
  await settle(page);
}

/** Clicks where a patch stands; the PID that the panel then tells, or null. */
async function click_patch(page, pid) {
  const at = await page.evaluate((one) => window.townskin.place_of(one), pid);
  if (!at) return null;
  const box = await page.locator("#scene").boundingBox();
  const [x, y] = [box.x + at.x, box.y + at.y];
  const free = await page.evaluate(([a, b]) => document.elementFromPoint(a, b)?.id === "scene", [x, y]);
  if (!free) return null;
  await page.mouse.click(x, y);
  const heading = page.getByRole("heading", { name: /^Patch -?\d+$/ });
  await heading.waitFor({ timeout: 10000 }).catch(() => null);
  const text = (await heading.count()) > 0 ? await heading.textContent() : "";
  return text ? Number(text.replace("Patch ", "")) : null;
}

/** Looks from above and clicks one of the highest surfaces that look up, which nothing can cover. */
async function check_click(page, run, values, hour) {
  await page.locator("#scene").focus();
  await page.keyboard.press("t");
  await at_rest(page);
  const upward = patches_of(run).filter((patch) => patch.nz > 0.9 && [1, 3].includes(patch.type));
  upward.sort((a, b) => b.k - a.k || a.pid - b.pid);
  let asked = 0;
  for (const { pid } of upward) {
    const shown = await click_patch(page, pid);
    if (shown === null) continue; // a card stands before it
    if (++asked < 4 && shown !== pid) continue; // leaves above it
    assert.equal(shown, pid);
    await page.locator(".headline dd").first().waitFor();
    const text = await page.locator(".headline").textContent();
    const value = Number(text.match(/(-?[\d.]+) °C/)[1]);
    const stated = Number((await page.locator(".legend").textContent()).match(/±([\d.]+) °C/)[1]);
    assert.ok(stated > 0 && stated < 0.01, `stated error ${stated}`);
    const held = values.get(pid).get(hour);
    assert.ok(Math.abs(value - held) <= stated, `patch ${pid}: ${value} shown, ${held} held, ±${stated}`);
    await page.keyboard.press("Escape");
    assert.equal(await page.getByRole("heading", { name: /^Patch/ }).count(), 0);
    return;
  }
  assert.fail("no patch could be clicked");
}

async function check_page(page, run, values, has_walls) {
  await set_time(page, 14);
  const first = await at_rest(page);
  assert.ok(first.drawn > 0.03 && first.colours > 12, `blank canvas: ${JSON.stringify(first)}`);
  const count = Number(await page.getByRole("slider", { name: "time" }).getAttribute("max"));
  assert.ok(count >= 24, `${count} hours`);
  await set_time(page, 3);
  await changed(page, first, "the slider changes no colour");
  if (values) await check_click(page, run, values, 3);
  if (has_walls) {
    await page.getByRole("button", { name: "show all" }).click();
    if ((await page.locator("details.filters").getAttribute("open")) === null)
      await page.locator("summary").click();
    const before = await at_rest(page);
    await page.getByRole("checkbox", { name: "wall" }).uncheck();
    const without = await changed(page, before, "the filter hides nothing");
    await page.getByRole("checkbox", { name: "wall" }).check();
    await changed(page, without, "the filter does not show what it hid");
    assert.equal((await at_rest(page)).sum, before.sum);
  }
  assert.deepEqual(page.faults, []);
}

async function check_layout(page) {
  const outside = await page.evaluate(() =>
    [...document.querySelectorAll(".card, .viewing")].filter((card) => {
      const box = card.getBoundingClientRect();
      return box.width > 0 && (box.left < 0 || box.right > innerWidth + 0.5 || box.bottom > innerHeight + 0.5);
    }).map((card) => card.className));
  assert.deepEqual(outside, [], "cards stand outside the window");
}

/// All of it in the window of a desk and in that of a phone.
async function check_sizes(page, run, values, has_walls) {
  for (const size of [desk, phone]) {
    await page.setViewportSize(size);
    await check_layout(page);
    await check_page(page, run, values, has_walls);
  }
  await page.setViewportSize(desk);
}

async function check_keys(page) {
  const slider = page.getByRole("slider", { name: "time" });
  await page.locator("#scene").focus();
  const before = await slider.inputValue();
  await page.keyboard.press("Space");
  await page.waitForFunction((old) => document.getElementById("time").value !== old, before);
  await page.keyboard.press("Space");
  await slider.focus();
  await set_time(page, 5);
  await page.keyboard.press("ArrowRight");
  assert.equal(await slider.inputValue(), "6");
}

const checks = {
  async block(context) {
    const run = run_of("block");
    const page = await open(context, page_of(run));
    await check_sizes(page, run, temperatures(run), true);
    await check_keys(page);
    await page.selectOption("#building", { index: 3 });
    await page.getByRole("button", { name: "charts of the district" }).click();
    await page.getByText("Released heat per m² of floor, building").waitFor();
    await page.waitForFunction(() => document.querySelectorAll(".panel:not([hidden]) canvas").length >= 5);
    await page.fill("#find", "700");
    await page.keyboard.press("Enter");
    await page.getByRole("heading", { name: "Patch 700" }).waitFor();
    await page.waitForFunction(() => document.querySelectorAll(".partners .badge").length === 5);
    assert.deepEqual(page.faults, []);
  },
  async canyon(context) {
    const run = run_of("canyon");
    const page = await open(context, page_of(run));
    await check_sizes(page, run, temperatures(run), false);
  },
  async street_trees(context) {
    const run = run_of("street_trees");
    const page = await open(context, page_of(run));
    await check_sizes(page, run, temperatures(run), true);
    const before = await at_rest(page);
    await page.selectOption("#field", { label: "leaf temperature [°C]" });
    await changed(page, before, "the field changes no colour");
    await page.waitForFunction(() => /leaf/.test(document.querySelector(".legend").ariaLabel));
  },
  async two_months(context) {
    const run = run_of("two_months");
    const page = await open(context, page_of(run));
    assert.match(await page.locator(".controls .when").textContent(), /August, 14 h/);
    await check_sizes(page, run, null, true);
  },
  async city(context) {
    if (!townskin_case) return console.log("city: left out, townskin_case was not built");
    const run = run_of("city");
    const page = await open(context, page_of(run));
    await check_sizes(page, run, temperatures(run), true);
  },
  async "names are text"(context) {
    const run = run_of("canyon", "<script>document.title='x'<img src=x onerror=\"document.title='x'\">");
    for (const file of ["Weather.txt", "Patch.txt"]) {
      const text = readFileSync(join(run, file), "utf8");
      writeFileSync(join(run, file), text.replace(/^.*\n/, "</script><script>document.title='x'</script>\n"));
    }
    const page = await open(context, page_of(run));
    assert.match(await page.title(), /^<script>document.title='x'<img/);
    assert.equal(await page.locator("h1").textContent(), await page.title());
    assert.deepEqual(page.faults, []);
  },
  async "a run cut short"(context) {
    const run = run_of("canyon", "cut");
    const results = join(run, "PatchSurfTemp.txt");
    truncateSync(results, Math.floor(0.4 * readFileSync(results).length));
    rmSync(join(run, "ProgressLog.txt"));
    const page = await open(context, page_of(run));
    const count = Number(await page.getByRole("slider", { name: "time" }).getAttribute("max"));
    assert.ok(count >= 8 && count < 24, `${count} hours`);
    assert.match(await page.locator(".note").textContent(), /not|cut/);
    rmSync(results);
    for (const file of ["SurfTemp.txt", "SunSky.txt"]) rmSync(join(run, file));
    const bare = await open(context, page_of(run));
    assert.ok((await picture(bare)).drawn > 0.03, "patches without values are not drawn");
    assert.deepEqual([...page.faults, ...bare.faults], []);
  },
};

const browser = await chromium.launch({
  executablePath: browser_program,
  args: ["--headless=new", "--no-sandbox", "--use-angle=swiftshader", "--enable-unsafe-swiftshader",
    "--disable-gpu-watchdog"], // which ends a slow frame on a busy machine
});
let failed = 0;
try {
  for (const [name, check] of Object.entries(checks)) {
    const start = Date.now();
    const context = await browser.newContext({ viewport: desk, reducedMotion: "reduce" });
    try {
      await check(context);
      console.log(`passed: ${name}, ${Date.now() - start} ms`);
    } catch (fault) {
      ++failed;
      console.log(`FAILED: ${name}: ${fault.stack}`);
    }
    await context.close();
  }
} finally {
  await browser.close();
  rmSync(folder, { recursive: true, force: true });
}
process.exit(failed === 0 ? 0 : 1);
