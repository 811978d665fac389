-- Turns a folder of results of `rt305 measure` and `rt305 quality` into Parquet, and asks it three questions. Run it with
-- DuckDB 1.0 or later in the folder that holds `results`: duckdb < results.sql
--
-- Keys that are not listed here are left out; a figure that a line does not have is null. `path` is the file as it was
-- given to rt305, from the manifest, `time` that of the first sample of the window or of the event, null in later segments,
-- whose distance from the first is not known, and `day` its date or that of the recording.

create or replace temp view manifest as
select result, max_by(file, done_at) as path
from (select *, row_number() over () as done_at
      from read_json('results/manifest.jsonl', format = 'newline_delimited', ignore_errors = true,
                     columns = {file: 'varchar', result: 'varchar', state: 'varchar'}))
where state <> 'failed'
group by result;

create or replace temp view lines as
select coalesce(l.recording.station, '-') as station,
       coalesce(l.recording.recorder, '-') as recorder,
       coalesce(strftime(coalesce(t.time, t.first), '%Y-%m-%d'), '-') as day,
       t.time, m.path, l.recording.file, l.recording.sha256, l.tool.version as tool, l.tool.library, l.options,
       l.recording.nominal, coalesce(l.kind, 'measurement') as kind,
       t.start, l.duration, l.event, l.percent, l.phases,
       l.parameters.phase_voltage.a as Ua, l.parameters.phase_voltage.b as Ub, l.parameters.phase_voltage.c as Uc,
       l.parameters.current.a as Ia, l.parameters.current.b as Ib, l.parameters.current.c as Ic,
       greatest(l.parameters.thd_voltage.a, l.parameters.thd_voltage.b, l.parameters.thd_voltage.c) as thd_voltage,
       greatest(l.parameters.thd_current.a, l.parameters.thd_current.b, l.parameters.thd_current.c) as thd_current,
       l.derived.P.total as P, l.derived.S.total as S, l.derived.PF.total as PF, l.derived.frequency.total as frequency
from read_json('results/*-*.jsonl', format = 'newline_delimited', filename = true, columns = {
       tool: 'struct(version varchar, library varchar)',
       recording: 'struct(file varchar, sha256 varchar, station varchar, recorder varchar, "start" varchar, nominal double,
                    segment integer)',
       options: 'json',
       measured: 'struct("start" double)',
       kind: 'varchar', "start": 'double', duration: 'double', "event": 'varchar', percent: 'double', phases: 'varchar[]',
       parameters: 'struct(phase_voltage struct(a double, b double, c double), current struct(a double, b double, c double),
                    thd_voltage struct(a double, b double, c double), thd_current struct(a double, b double, c double))',
       derived: 'struct(P struct(total double), S struct(total double), PF struct(total double),
                 frequency struct(total double))'}) as l
cross join lateral (
  select s.start, s.first,
         case when l.recording.segment = 1 then s.first + to_microseconds(cast(1e6 * s.start as bigint)) end as time
  from (select coalesce(l.start, l.measured.start) as start, try_cast(l.recording.start as timestamp) as first) as s) as t
left join manifest as m on m.result = parse_filename(l.filename);

-- station=.../day=.../data_0.parquet
copy (select * from lines order by station, day, time)
to 'parquet' (format parquet, partition_by (station, day), overwrite_or_ignore true);

create or replace temp view figures as
select * from read_parquet('parquet/**/*.parquet', hive_partitioning = true,
                           hive_types = {station: 'varchar', day: 'varchar'});

-- The worst THD of each feeder, and when it was.
select station, recorder, max(thd_voltage) as worst_thd, max_by(time, thd_voltage) as time, max_by(path, thd_voltage) as path
from figures
where thd_voltage is not null
group by station, recorder
order by worst_thd desc, station, recorder;

-- Dips of each month: how many, and the deepest. They are in the results of `rt305 quality`.
select station, recorder, strftime(time, '%Y-%m') as month, count(*) as dips, min(percent) as lowest_percent,
       max(duration) as longest
from figures
where event = 'dip'
group by station, recorder, month
order by month, station, recorder;

-- Recordings with a power factor below 0.9 in some window, the lowest first. It is negative where power flows back.
select station, recorder, min(abs(PF)) as lowest_pf, count(*) as windows, min_by(time, abs(PF)) as time, path
from figures
where abs(PF) < 0.9
group by station, recorder, path
order by lowest_pf, station, recorder;
