// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

// Logs to the console what of the page does not show its figures, or cannot be seen or reached at
// this width. figures: the JSON of the same report.
(() => {
    const wrong = text => console.log('WRONG at ' + innerWidth + ': ' + text);
    const all = (selector, root = document) => [...root.querySelectorAll(selector)];
    const texts = (selector, root) => all(selector, root).map(each => each.textContent);
    const isSame = (seen, expected) => typeof expected === 'number'
        ? Math.abs(seen - expected) < 0.1 : seen === expected;
    const same = (seen, expected, what) => {
        const [found, wanted] = [[seen].flat(), [expected].flat()];
        if (found.length !== wanted.length || !found.every((each, i) => isSame(each, wanted[i])))
            wrong(`${what}: ${found}, not ${wanted}`);
    };

    // The texts of the table in a section, row by row.
    const cellsOf = id => all(`#${id} tbody:last-of-type tr`).map(row => texts('td', row));
    const headOf = text => text.replace(/ \(.*/, '');

    const number = (shape, name) => Number(shape.getAttribute(name));
    const points = line => line.getAttribute('points').split(' ')
        .map(pair => pair.split(',').map(Number));
    // The percentage at a height, from the labels of the axis; those have to be in equal steps.
    const percentAxis = chart => {
        const labels = all('.label.end', chart).filter(text => text.textContent.endsWith('%'));
        const values = labels.map(text => parseInt(text.textContent));
        const heights = labels.map(text => number(text, 'y') - 4);
        const perPixel = (values[0] - values[1]) / (heights[1] - heights[0]);
        const at = y => 100 - (y - heights[0]) * perPixel;
        same(heights.map(at), values, 'percentage of the axis');
        same(all('.grid', chart).map(line => at(points(line)[0][1])), values, 'grid line');
        return {at, lowest: values[values.length - 1]};
    };
    const checkYields = (chart, rows, slots, cells) => {
        const {at, lowest} = percentAxis(chart);
        const shown = value => Math.max(100 * value, lowest);
        const marks = all('use', chart);
        const areas = all('.within', chart);
        const pitch = number(areas[0], 'width');
        const maxUnits = Math.max(...rows.map(row => row.units));
        const lineEnds = all('.trend', chart).map(line => points(line)[1].join());
        const edges = all('.limit', chart).map(line => at(points(line)[0][1]));
        rows.forEach((row, i) => {
            const what = cells[i].name + ': ';
            const {lcl, ucl, position} = row.control_limits;
            const [x, y] = [number(marks[i], 'x'), number(marks[i], 'y')];
            const [top, height] = [number(areas[i], 'y'), number(areas[i], 'height')];
            const bar = all('.bar', chart)[i];
            const mark = {'below LCL': 'below', 'above UCL': 'above', 'within': 'dot'}[position];
            same(['class', 'href'].map(name => marks[i].getAttribute(name)), [mark, '#' + mark],
                 what + 'mark');
            same(at(y), 100 * row.first_pass_yield.share, what + 'yield');
            same([at(top), at(top + height), ...edges.slice(2 * i, 2 * i + 2)],
                 [ucl, lcl, ucl, lcl].map(shown), what + 'limits');
            if (row.units === maxUnits && 100 * lcl < lowest)
                wrong(what + 'the LCL is below the axis');
            same([number(areas[i], 'x') + pitch / 2, (x - number(marks[0], 'x')) / pitch],
                 [x, slots[i]], what + 'place');
            same(lineEnds.includes(`${x},${y}`), i > 0 && slots[i] === slots[i - 1] + 1,
                 what + 'line');
            same([100 * number(bar, 'height') / 54, number(bar, 'y') + number(bar, 'height')],
                 [100 * row.units / maxUnits, 290], what + 'bar');
            same(texts('title', chart)[i], `${cells[i].name}: ${cells[i].units} unit` +
                `${row.units === 1 ? '' : 's'}, first-pass yield ${cells[i].yield}`, 'hover text');
        });
        same(at(points(chart.querySelector('.centre'))[0][1]),
             shown(figures.totals.first_pass_yield.share), 'centre line');
        same(texts('.label.end', chart).slice(-2),
             [maxUnits.toLocaleString('en'), 'units'], 'unit axis');
    };
    const dayMs = 24 * 3600 * 1000;
    const monthOf = day => 12 * day.getUTCFullYear() + day.getUTCMonth();
    const checkTrend = chart => {
        const isMonth = figures.period === 'month';
        const days = figures.trend.map(row => new Date(row.first_tested));
        const slots = days.map(day => isMonth ? monthOf(day) - monthOf(days[0])
            : (day - days[0]) / dayMs / (figures.period === 'week' ? 7 : 1));
        const cells = cellsOf('trend').map(([name, units, share]) => ({name, units, yield: share}));
        checkYields(chart, figures.trend, slots, cells);
        const timeOf = text => Date.parse(text.replace('Week of ', '') + ' UTC');
        same(cells.map(cell => timeOf(cell.name)), days.map(Number), 'name of a period');
        const centres = all('use', chart).map(mark => number(mark, 'x'));
        const labels = all('.label.middle', chart);
        same(number(labels[0], 'x'), centres[0], 'first label');
        for (const label of labels) {
            const day = days[centres.indexOf(number(label, 'x'))];
            const whole = isMonth ? '1 ' + label.textContent
                                  : `${label.textContent} ${day.getUTCFullYear()}`;
            same(timeOf(whole), Number(day), 'label');
        }
    };
    const checkStations = chart => {
        const cells = cellsOf('stations').map(([name, units, , share]) =>
            ({name, units, yield: share}));
        checkYields(chart, figures.stations, cells.map((_, i) => 2 * i), cells);
        const length = Math.floor(120 / cells.length);
        same(texts('.label.middle', chart), cells.map(({name}) =>
            name.length <= length ? name : '…' + name.slice(1 - length)), 'name of a station');
    };
    // Bars with a name below and a number above; heights: in percent.
    const checkBars = (chart, height, heights, names, numbers) => {
        same(all('.bar', chart).map(bar => 100 * number(bar, 'height') / height), heights, 'bar');
        same(texts('.label.middle', chart), names, 'name of a bar');
        same(texts('.value', chart), numbers, 'number of a bar');
    };
    const checkPareto = chart => {
        const rows = figures.pareto.slice(0, 14);
        const sums = rows.map(row => 100 * row.cumulative);
        const {at} = percentAxis(chart);
        same(points(chart.querySelector('.trend')).map(([, y]) => at(y)), sums, 'sum');
        same(all('use', chart).map(dot => at(number(dot, 'y'))), sums, 'dot');
        const cells = cellsOf('pareto').slice(0, 14);
        checkBars(chart, 232, rows.map(row => 100 * row.share), cells.map(([name]) => headOf(name)),
                  cells.map(([, share]) => share.match(/\((.*) of/)[1]));
    };
    const checkBands = (chart, i) => {
        const heading = cellsOf('pareto')[i][0];
        const cells = cellsOf('bands').filter(([name]) => name === heading);
        const counts = cells.map(([, , units]) => Number(units.replace(',', '')));
        checkBars(chart, 78, counts.map(each => 100 * each / Math.max(...counts)),
                  cells.map(([, band]) => band.split(' ')[0]),
                  cells.map(([, , units]) => units.replace(/^0$/, '')));
        same(chart.parentElement.querySelector('h3').textContent, heading, 'heading');
    };
    const checkHeatMap = chart => {
        const steps = [0, 1, 2, 5, 10];
        figures.controls.filter(row => row.component !== 39).forEach((row, i) => {
            const {component, failed_units: part} = row;
            const step = steps.filter(most => 100 * part.count > most * part.of).length;
            const colour = part.of ? 'failed' + step : 'untested';
            const panel = all('g', chart)[i];
            const labels = [panel.nextElementSibling, panel.nextElementSibling.nextElementSibling];
            const [name, failed] = cellsOf('heat-map')[component];
            same(panel.querySelector('rect').getAttribute('class'), 'control ' + colour, name);
            same([panel, ...labels].map(each => each.textContent.trim()),
                 [`${name}: ${failed}`, String(component), headOf(failed)], 'text of ' + name);
            same(labels.map(text => text.classList[1]), Array(2).fill('on-' + colour), 'ink');
        });
        same(texts('.key text'), ['none', ...[...steps.slice(1), 100].map(most =>
            `up to ${most} %`)], 'key');
    };
    const checks = {'trend': checkTrend, 'stations': checkStations, 'heat-map': checkHeatMap,
                    'pareto': checkPareto, 'bands': checkBands};
    for (const [id, check] of Object.entries(checks)) {
        const rows = figures[{'heat-map': 'controls', 'bands': 'pareto'}[id] || id];
        const charts = all(`#${id} svg:not(.key)`);
        same(charts.length, Math.min(id === 'bands' ? 3 : 1, rows.length), 'charts of ' + id);
        charts.forEach(check);
    }

    const tables = ['last_logs', 'recent_days', 'not_passed', 'trend', 'stations', 'controls',
                    'pareto', 'missed_bands', 'aborted', 'attempts_by_number', 'retested'];
    same(all('tbody').map(body => body.rows.length),
         tables.map(name => Math.max(1, figures[name].length)), 'rows of tables');
    for (const row of all('tr').filter(row => row.textContent.trim() !== 'none'))
        same(row.cells.length, row.closest('table').rows[0].cells.length, 'cells of a row');
    for (const cell of all('td'))
        same(cell.className === 'bad', /^(no log|▼|failed$|aborted$)/.test(cell.textContent),
             'in red: ' + cell.textContent);

    for (const shape of all('svg:not(.marks) :not(title):not(text:empty)')) {
        const box = shape.getBBox();
        const view = shape.ownerSVGElement.viewBox.baseVal;
        const [x, y] = [box.x - view.x, box.y - view.y];
        if (Math.min(x, y, view.width - x - box.width, view.height - y - box.height) < -1)
            wrong('outside its chart: ' + shape.outerHTML);
    }
    for (const chart of all('svg')) {
        const boxes = all('.label.middle', chart).map(text => text.getBBox());
        if (boxes.some((box, i) => i > 0 && box.x < boxes[i - 1].x + boxes[i - 1].width))
            wrong('labels overlap: ' + texts('.label.middle', chart));
    }
    if (document.documentElement.scrollWidth > innerWidth)
        wrong('the page is wider than the window');
    for (const area of all('div').filter(div => div.scrollWidth > div.clientWidth + 1))
        if (area.tabIndex !== 0 || !area.getAttribute('aria-label'))
            wrong('the keyboard does not reach ' + area.outerHTML.slice(0, 80));
    for (const link of all('a'))
        if (!document.querySelector(link.getAttribute('href')))
            wrong('a link leads nowhere: ' + link.textContent);
    console.log('CHECKED');
})();
